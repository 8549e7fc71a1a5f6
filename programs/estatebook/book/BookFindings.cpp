// SPDX-License-Identifier: MIT
#include "estatebook/book/BookFindings.hpp"

#include "estatebook/BookObjects.hpp"
#include "estatebook/OpenBook.hpp"
#include "estatebook/Reckoned.hpp"
#include "estatebook/document/JsonText.hpp"

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "statement/TKStatement.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace estatebook {

using document::forMessage;
using platform::Decimal;
using platform::EntityDescription;
using platform::NoRow;
using platform::Row;
using platform::RowKey;
using platform::Store;

namespace {

class Findings {
public:
    explicit Findings(const StoredBook& book) : book_(book), store_(*book.store) {}

    std::vector<std::string> take() {
        auto ofFile = book_.store->check();
        if (!ofFile) throw storeFailure(book_.file, ofFile.error());
        findings_ = *std::move(ofFile);
        if (findings_.empty()) checkRows();
        if (findings_.empty()) checkFigures();
        return std::move(findings_);
    }

private:
    // -- Rows -------------------------------------------------------------------------------------------------

    /// The keys of each entity, sub-entities included; they grow.
    using Keys = std::vector<std::vector<RowKey>>;

    void checkRows() {
        Keys keys;
        for (const auto& entity : store_.model().entities()) {
            auto found = store_.fetchKeys(*entity);
            if (!found) throw storeFailure(book_.file, found.error());
            keys.push_back(*std::move(found));
        }
        for (const auto& entity : store_.model().entities()) {
            if (entity->superentity()) continue;
            const auto visited = store_.fetchRows(*entity, {}, [&](const Row& row) { checkRow(row, keys); });
            if (!visited) throw storeFailure(book_.file, visited.error());
        }
        checkMembers(keys);
    }

    void checkRow(const Row& row, const Keys& keys) {
        const platform::RowShape& shape = store_.shapes().of(*row.entity);
        for (std::size_t place = 0; place < row.links.size(); ++place) {
            const auto& relationship = *shape.links()[place].relationship;
            const RowKey target = row.links[place].target;
            const auto& targets = keys[relationship.destinationEntity->index()];
            if (target != NoRow && !std::ranges::binary_search(targets, target))
                find("The row {} of {} has as its {} the row {}, which is of another kind", row.key,
                     row.entity->name(), relationship.name.name(), target);
        }
        const auto name = shape.attribute(keys::name);
        if (name && row.entity->name().ends_with("Tag") && !row.values[*name].string())
            find("The row {} of {} is a tag without a name", row.key, row.entity->name());
    }

    /// Every member leads to its owner: as many are found from there as there are links.
    void checkMembers(const Keys& keys) {
        for (const auto& entity : store_.model().entities())
            for (const auto& relationship : entity->relationships()) {
                if (relationship.kind == platform::PropertyKind::ToOne || entity->isAbstract()) continue;
                const auto& owners = keys[entity->index()];
                const auto members = store_.members(relationship, owners);
                if (!members) throw storeFailure(book_.file, members.error());
                for (std::size_t index = 0; index < owners.size(); ++index)
                    checkMembersOf(*entity, relationship, owners[index], (*members)[index]);
            }
    }
    void checkMembersOf(const EntityDescription& owner, const platform::RelationshipDescription& relationship,
                        RowKey key, const std::vector<RowKey>& members) {
        const EntityDescription& entity = *relationship.destinationEntity;
        std::size_t leadBack = 0;
        const auto visited = store_.visitRows(entity, members, [&](const Row& row) {
            const auto link = store_.shapes().of(*row.entity).link(relationship.inverse);
            if (link && row.links[*link].target == key) ++leadBack;
        });
        if (!visited) throw storeFailure(book_.file, visited.error());
        if (leadBack != members.size())
            find("The row {} of {} has {} under \"{}\", of which {} lead back to it", key, owner.name(),
                 members.size(), relationship.name.name(), leadBack);
    }

    // -- Figures ----------------------------------------------------------------------------------------------

    void checkFigures() {
        const OpenBook book = OpenBook::of(book_);
        for (const OpenBook::Letting& letting : book.lettings()) {
            TKTenure& tenure = *letting.object;
            platform::Ref<platform::Error> error;
            if (!tenure.validateDuration(&error))
                find("The tenure \"{}\": {}", forMessage(letting.id), error->localizedDescription());
            const Schedule schedule(tenure);
            if (!schedule.row()) continue; // a book may hold terms by which no rent can be reckoned
            const auto statement = reckon([&] { return tenure.statement(); });
            if (statement) checkStatement(letting.id, **statement);
        }
    }

    void checkStatement(const std::string& letting, const TKStatement& statement) {
        const auto sums = reckon([&] {
            std::pair<Decimal, Decimal> lastAndSum;
            for (const TKStatementItem& item : *statement.items()) {
                lastAndSum.first = item.balance();
                lastAndSum.second += item.transaction()->amount().value_or(Decimal());
            }
            return lastAndSum;
        });
        if (sums && sums->first != sums->second)
            find("The statement of the tenure \"{}\" ends with {}, and its amounts come to {}",
                 forMessage(letting), sums->first.toString(), sums->second.toString());
    }

    template <class... Parts>
    void find(fmt::format_string<Parts...> text, Parts&&... parts) {
        findings_.push_back(fmt::format(text, std::forward<Parts>(parts)...));
    }

    const StoredBook& book_;
    const Store& store_;
    std::vector<std::string> findings_;
};

} // namespace

std::vector<std::string> findingsIn(const StoredBook& book) {
    return Findings(book).take();
}

} // namespace estatebook
