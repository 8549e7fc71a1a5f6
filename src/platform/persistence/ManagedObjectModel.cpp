// SPDX-License-Identifier: MIT
#include "platform/persistence/ManagedObjectModel.hpp"

#include "platform/persistence/ManagedObject.hpp"
#include "platform/values/Exception.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>

namespace estatebook::platform {

namespace {

constexpr std::string_view Magic = "EBMODEL\n";
constexpr std::uint32_t Format = 2;
constexpr std::size_t HeaderSize = 24;
constexpr std::size_t LargestResource = std::size_t{1} << 20;
// Far more than any class table can answer to; a resource made to exhaust us ends here.
constexpr std::size_t MostEntities = 1024;
constexpr std::size_t MostProperties = 126;

struct Refusal {
    ModelErrorCode code;
    std::string reason;
};

std::uint64_t sumOf(std::span<const std::byte> bytes) noexcept {
    std::uint64_t sum = 0xcbf29ce484222325u; // FNV-1a
    for (const std::byte byte : bytes) sum = (sum ^ static_cast<std::uint8_t>(byte)) * 0x100000001b3u;
    return sum;
}

/// Takes little-endian numbers and counted texts off a run of bytes.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::byte> bytes) noexcept : rest_(bytes) {}

    template <class T>
    T number() {
        const auto bytes = take(sizeof(T));
        T value = 0;
        for (std::size_t index = sizeof(T); index-- > 0;)
            value = static_cast<T>((std::uint64_t{value} << 8) | static_cast<std::uint8_t>(bytes[index]));
        return value;
    }
    std::string text() {
        const auto bytes = take(number<std::uint16_t>());
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    /// A number of a small range, such as an enumeration's.
    std::uint8_t choice(std::uint8_t first, std::uint8_t last) {
        const auto value = number<std::uint8_t>();
        if (value < first || value > last)
            throw Refusal{ModelErrorCode::Damaged, "it holds a number out of range"};
        return value;
    }
    [[nodiscard]] std::span<const std::byte> rest() const noexcept { return rest_; }

private:
    std::span<const std::byte> take(std::size_t count) {
        if (count > rest_.size()) throw Refusal{ModelErrorCode::Damaged, "it ends too early"};
        const auto taken = rest_.first(count);
        rest_ = rest_.subspan(count);
        return taken;
    }
    std::span<const std::byte> rest_;
};

// The classes have named all their keys; a name from outside makes no new one.
Key keyOf(const std::string& name) {
    if (const auto key = Key::find(name)) return *key;
    throw Refusal{ModelErrorCode::Mismatched, "no class has a property \"" + name + "\""};
}

bool canBeIndexed(AttributeType type) {
    return type == AttributeType::String || type == AttributeType::Decimal;
}

void requireAtMost(std::size_t limit, std::size_t count) {
    if (count > limit) throw Refusal{ModelErrorCode::Damaged, "it describes more than a model can hold"};
}

} // namespace

class ModelReader {
public:
    ModelReader(std::span<const std::byte> bytes, std::span<const ManagedClass> classes) noexcept
        : bytes_(bytes), classes_(classes) {}

    Ref<ManagedObjectModel> read() {
        ByteReader payload(checkedPayload());
        model_->name_ = payload.text();
        const auto count = payload.number<std::uint16_t>();
        requireAtMost(MostEntities, count);
        for (std::size_t index = 0; index < count; ++index) readEntity(payload, index);
        if (!payload.rest().empty())
            throw Refusal{ModelErrorCode::Damaged, "something follows its last entity"};
        for (const auto& entity : model_->entities_) findParent(*entity);
        inherit();
        for (const auto& entity : model_->entities_) bind(*entity);
        for (const auto& entity : model_->entities_) checkInverses(*entity);
        return model_;
    }

private:
    std::span<const std::byte> checkedPayload() const {
        if (bytes_.size() < HeaderSize || std::memcmp(bytes_.data(), Magic.data(), Magic.size()) != 0)
            throw Refusal{ModelErrorCode::Damaged, "it is no compiled model"};
        ByteReader header(bytes_.subspan(Magic.size()));
        const auto format = header.number<std::uint32_t>();
        const auto length = header.number<std::uint32_t>();
        const auto sum = header.number<std::uint64_t>();
        if (format > Format)
            throw Refusal{ModelErrorCode::Newer,
                          "its format " + std::to_string(format) + " is newer than this library"};
        if (format != Format || length != header.rest().size() || sum != sumOf(header.rest()))
            throw Refusal{ModelErrorCode::Damaged, "its length or sum is not what it says"};
        return header.rest();
    }

    static std::uint16_t propertyCount(ByteReader& payload) {
        const auto count = payload.number<std::uint16_t>();
        requireAtMost(MostProperties, count);
        return count;
    }

    void readEntity(ByteReader& payload, std::size_t index) {
        auto entity = std::make_unique<EntityDescription>();
        entity->index_ = index;
        entity->model_ = model_.get();
        entity->name_ = payload.text();
        entity->className_ = payload.text();
        entity->parentName_ = payload.text();
        entity->isAbstract_ = payload.choice(0, 1) != 0;
        if (entity->name_.empty() || model_->entityNamed(entity->name_))
            throw Refusal{ModelErrorCode::Damaged, "it describes the entity \"" + entity->name_ + "\" twice"};
        for (auto count = propertyCount(payload); count > 0; --count) {
            AttributeDescription& attribute = entity->attributes_.emplace_back();
            attribute.name = keyOf(payload.text());
            attribute.type = static_cast<AttributeType>(payload.choice(1, 6));
            attribute.isTransient = payload.choice(0, 1) != 0;
            attribute.isWrittenBySystem = payload.choice(0, 1) != 0;
            attribute.isIndexed = payload.choice(0, 1) != 0;
            if (attribute.isIndexed && (attribute.isTransient || !canBeIndexed(attribute.type)))
                throw Refusal{ModelErrorCode::Damaged,
                              "it has objects looked up by what no store can compare"};
        }
        for (auto count = propertyCount(payload); count > 0; --count) {
            RelationshipDescription& relationship = entity->relationships_.emplace_back();
            relationship.name = keyOf(payload.text());
            relationship.destination = payload.text();
            relationship.inverse = keyOf(payload.text());
            relationship.kind = static_cast<PropertyKind>(payload.choice(0, 2) + 1);
            relationship.deleteRule = static_cast<DeleteRule>(payload.choice(0, 3));
        }
        model_->entities_.push_back(std::move(entity));
    }

    void findParent(EntityDescription& entity) const {
        if (entity.parentName_.empty()) return;
        entity.parent_ = model_->entityNamed(entity.parentName_);
        if (!entity.parent_)
            throw Refusal{ModelErrorCode::Damaged, "the parent of \"" + entity.name_ + "\" is not described"};
    }

    // Parents first, so that each takes over what its parent has gathered.
    void inherit() const {
        std::vector<bool> done(model_->entities_.size());
        const auto inheritInto = [&](const auto& self, EntityDescription& entity, std::size_t depth) -> void {
            if (done[entity.index_]) return;
            if (depth >= ManagedClass::MaximalLineage)
                throw Refusal{ModelErrorCode::Damaged,
                              "\"" + entity.name_ + "\" has too many ancestors, or is one"};
            if (entity.parent_) {
                EntityDescription& parent = *model_->entities_[entity.parent_->index_];
                self(self, parent, depth + 1);
                entity.attributes_.insert(entity.attributes_.begin(), parent.attributes_.begin(),
                                          parent.attributes_.end());
                entity.relationships_.insert(entity.relationships_.begin(), parent.relationships_.begin(),
                                             parent.relationships_.end());
            }
            done[entity.index_] = true;
        };
        for (const auto& entity : model_->entities_) inheritInto(inheritInto, *entity, 0);
    }

    // What the resource says of an entity and what its class was compiled with must be one.
    void bind(EntityDescription& entity) const {
        const auto found = std::ranges::find(classes_, entity.className_, &ManagedClass::name);
        if (found == classes_.end())
            throw Refusal{ModelErrorCode::Mismatched, "there is no class \"" + entity.className_ + "\""};
        entity.class_ = &*found;
        std::size_t described = 0;
        for (const auto& table : found->properties) {
            if (!table) continue;
            for (const ModelledProperty& property : table()) {
                ++described;
                if (!agrees(entity, property)) mismatch(entity, property.key);
            }
        }
        if (described != entity.attributes_.size() + entity.relationships_.size() ||
            (!entity.isAbstract_ && !found->make))
            throw Refusal{ModelErrorCode::Mismatched,
                          "the entity \"" + entity.name_ + "\" is not what its class was built for"};
    }

    static bool agrees(const EntityDescription& entity, const ModelledProperty& property) {
        if (property.isRelationship()) {
            const RelationshipDescription* relationship = entity.relationship(property.key);
            return relationship && relationship->kind == property.kind &&
                   relationship->inverse == property.inverse;
        }
        const auto attribute =
            std::ranges::find(entity.attributes_, property.key, &AttributeDescription::name);
        return attribute != entity.attributes_.end() && attribute->type == property.type &&
               attribute->isTransient == ((property.flags & PropertyTransient) != 0) &&
               attribute->isWrittenBySystem == ((property.flags & PropertyWrittenBySystem) != 0);
    }

    void checkInverses(EntityDescription& entity) const {
        for (RelationshipDescription& relationship : entity.relationships_) {
            const EntityDescription* destination = model_->entityNamed(relationship.destination);
            relationship.destinationEntity = destination;
            const RelationshipDescription* back =
                destination ? destination->relationship(relationship.inverse) : nullptr;
            const bool manyWithMany =
                back && back->kind != PropertyKind::ToOne && relationship.kind != PropertyKind::ToOne;
            if (!back || back->inverse != relationship.name || manyWithMany)
                mismatch(entity, relationship.name);
        }
    }

    [[noreturn]] static void mismatch(const EntityDescription& entity, Key key) {
        throw Refusal{ModelErrorCode::Mismatched, "the property \"" + std::string(key.name()) + "\" of \"" +
                                                      entity.name_ +
                                                      "\" is not what its class was built for"};
    }

    std::span<const std::byte> bytes_;
    std::span<const ManagedClass> classes_;
    Ref<ManagedObjectModel> model_{new ManagedObjectModel};
};

namespace {

void report(Ref<Error>* error, ModelErrorCode code, const std::string& text) {
    if (error) *error = Error::make("Persistence", static_cast<std::int64_t>(code), text);
}

} // namespace

Ref<ManagedObjectModel> ManagedObjectModel::modelWithBytes(std::span<const std::byte> bytes,
                                                           std::span<const ManagedClass> classes,
                                                           Ref<Error>* error) {
    try {
        return ModelReader(bytes, classes).read();
    } catch (const Refusal& refusal) {
        report(error, refusal.code, "The object model cannot be used: " + refusal.reason);
        return nullptr;
    }
}

Ref<ManagedObjectModel> ManagedObjectModel::modelWithContentsOfFile(const std::string& path,
                                                                    std::span<const ManagedClass> classes,
                                                                    Ref<Error>* error) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) {
        report(error, errno == ENOENT ? ModelErrorCode::Missing : ModelErrorCode::Unreadable,
               path + ": " + std::strerror(errno));
        return nullptr;
    }
    std::vector<std::byte> bytes(LargestResource + 1);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (std::ferror(file.get()) || bytes.size() > LargestResource) {
        report(error, ModelErrorCode::Unreadable,
               path + ": it cannot be read, or is larger than a model can be");
        return nullptr;
    }
    Ref<Error> reason;
    auto model = modelWithBytes(bytes, classes, &reason);
    if (!model && error)
        *error = Error::make(reason->domain(), reason->code(), path + ": " + reason->localizedDescription());
    return model;
}

const EntityDescription* ManagedObjectModel::entityNamed(std::string_view name) const noexcept {
    for (const auto& entity : entities_)
        if (entity->name() == name) return entity.get();
    return nullptr;
}

} // namespace estatebook::platform
