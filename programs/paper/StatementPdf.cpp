// SPDX-License-Identifier: MIT
#include "paper/StatementPdf.hpp"

#include "paper/StatementLayout.hpp"

#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace estatebook::paper {

namespace {

/// The first of these that is there; other scripts are lent by whatever fonts have them.
constexpr char Fonts[] = "Liberation Sans,Arimo,Arial,DejaVu Sans,sans-serif";
/// Digits of one width, where a font has several kinds of them.
constexpr char Figures[] = "tnum=1";
constexpr double PaleGrey = 0.4;
constexpr double RuleGrey = 0.55;
constexpr double RuleWidth = 0.5;

template <auto free>
struct Freed {
    template <class T>
    void operator()(T* each) const noexcept {
        free(each);
    }
};
template <class T>
using Shared = std::unique_ptr<T, Freed<g_object_unref>>;

/// The text as it can be set: well formed, with line feeds as its only control characters.
std::string printable(std::string_view text) {
    if (text.empty()) return {};
    const std::unique_ptr<char, Freed<g_free>> whole(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    std::string made(whole.get());
    std::ranges::replace_if(
        made, [](char each) { return (each >= 0 && each < ' ' && each != '\n') || each == '\x7f'; }, ' ');
    return made;
}

/// Sets lines of text; measures and shows the very same ones.
class Typesetter final : public TextMeasure {
public:
    Typesetter()
        : fonts_(pango_cairo_font_map_new()), context_(contextOf(*fonts_)),
          layout_(pango_layout_new(context_.get())) {
        requireFont();
        pango_layout_set_wrap(layout_.get(), PANGO_WRAP_WORD_CHAR);
        const std::unique_ptr<PangoAttrList, Freed<pango_attr_list_unref>> attributes(pango_attr_list_new());
        pango_attr_list_insert(attributes.get(), pango_attr_font_features_new(Figures));
        pango_layout_set_attributes(layout_.get(), attributes.get());
    }

    double width(std::string_view text, const TextStyle& style) override {
        lay(text, style, 0);
        PangoRectangle extents{};
        pango_layout_get_extents(layout_.get(), nullptr, &extents);
        return pango_units_to_double(extents.width);
    }

    std::vector<Line> linesOf(std::string_view text, const TextStyle& style, double width) override {
        lay(text, style, width);
        std::vector<Line> lines;
        lines.reserve(lines_.size());
        for (PangoLayoutLine* line : lines_) {
            PangoRectangle extents{};
            pango_layout_line_get_extents(line, nullptr, &extents);
            lines.push_back({pango_units_to_double(PANGO_ASCENT(extents)),
                             pango_units_to_double(PANGO_DESCENT(extents))});
        }
        return lines;
    }

    void show(const PlacedText& placed, cairo_t* cairo) {
        lay(placed.text, placed.style, placed.width);
        if (placed.line >= lines_.size()) return;
        const double grey = placed.style.isPale ? PaleGrey : 0;
        cairo_set_source_rgb(cairo, grey, grey, grey);
        cairo_move_to(cairo, placed.x, placed.baseline);
        pango_cairo_show_layout_line(cairo, lines_[placed.line]);
    }

private:
    /// Printers have so many dots that nothing is moved to meet them.
    static Shared<PangoContext> contextOf(PangoFontMap& fonts) {
        Shared<PangoContext> context(pango_font_map_create_context(&fonts));
        const std::unique_ptr<cairo_font_options_t, Freed<cairo_font_options_destroy>> options(
            cairo_font_options_create());
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(context.get(), options.get());
        pango_context_set_round_glyph_positions(context.get(), FALSE);
        return context;
    }

    void requireFont() const {
        const Shared<PangoFont> font(pango_context_load_font(context_.get(), fontOf({.size = 10}).get()));
        if (!font)
            throw PaperError(
                "there is no font to set it in; install one, such as the package fonts-liberation2");
    }

    /// Lays the text out unless it is what was laid out last: lines of a long one are asked for one by one.
    void lay(std::string_view text, const TextStyle& style, double width) {
        if (laid_ && laid_->text == text && laid_->style == style && laid_->width == width) return;
        laid_ = {std::string(text), style, width};
        pango_layout_set_font_description(layout_.get(), fontOf(style).get());
        const std::string made = printable(text);
        pango_layout_set_width(layout_.get(), width > 0 ? pango_units_from_double(width) : -1);
        pango_layout_set_text(layout_.get(), made.data(), static_cast<int>(made.size()));
        lines_.clear();
        for (GSList* each = pango_layout_get_lines_readonly(layout_.get()); each; each = each->next)
            lines_.push_back(static_cast<PangoLayoutLine*>(each->data));
    }

    using Font = std::unique_ptr<PangoFontDescription, Freed<pango_font_description_free>>;

    static Font fontOf(const TextStyle& style) {
        Font font(pango_font_description_from_string(Fonts));
        pango_font_description_set_absolute_size(font.get(), style.size * PANGO_SCALE);
        pango_font_description_set_weight(font.get(), style.isBold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
        pango_font_description_set_style(font.get(),
                                         style.isItalic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
        return font;
    }

    struct Laid {
        std::string text;
        TextStyle style;
        double width;
    };

    Shared<PangoFontMap> fonts_;
    Shared<PangoContext> context_;
    Shared<PangoLayout> layout_;
    std::optional<Laid> laid_;
    std::vector<PangoLayoutLine*> lines_;
};

/// A PDF document that is written page by page.
class PdfWriter {
public:
    PdfWriter(PaperSize size, const std::string& title)
        : surface_(cairo_pdf_surface_create_for_stream(append, &bytes_, size.width, size.height)),
          cairo_(cairo_create(surface_.get())) {
        cairo_pdf_surface_set_metadata(surface_.get(), CAIRO_PDF_METADATA_TITLE, printable(title).c_str());
        cairo_pdf_surface_set_metadata(surface_.get(), CAIRO_PDF_METADATA_CREATOR, "EstateBook");
        // Else it is the time of the clock.
        cairo_pdf_surface_set_metadata(surface_.get(), CAIRO_PDF_METADATA_CREATE_DATE, "");
        cairo_set_line_width(cairo_.get(), RuleWidth);
    }
    PdfWriter(const PdfWriter&) = delete;
    PdfWriter& operator=(const PdfWriter&) = delete;

    void addPage(const StatementLayout::Page& page, Typesetter& typesetter) {
        cairo_set_source_rgb(cairo_.get(), RuleGrey, RuleGrey, RuleGrey);
        for (const PlacedRule& rule : page.rules) {
            cairo_move_to(cairo_.get(), rule.left, rule.y);
            cairo_line_to(cairo_.get(), rule.right, rule.y);
            cairo_stroke(cairo_.get());
        }
        for (const PlacedText& text : page.texts) typesetter.show(text, cairo_.get());
        cairo_show_page(cairo_.get());
    }

    std::string finish() {
        const cairo_status_t ofDrawing = cairo_status(cairo_.get());
        cairo_.reset();
        cairo_surface_finish(surface_.get());
        for (const cairo_status_t status : {ofDrawing, cairo_surface_status(surface_.get())}) {
            if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
            if (status != CAIRO_STATUS_SUCCESS)
                throw PaperError(std::string("it cannot be set on paper: ") + cairo_status_to_string(status));
        }
        return std::move(bytes_);
    }

private:
    static cairo_status_t append(void* bytes, const unsigned char* data, unsigned int length) noexcept {
        try {
            static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
            return CAIRO_STATUS_SUCCESS;
        } catch (const std::bad_alloc&) {
            return CAIRO_STATUS_NO_MEMORY;
        }
    }

    std::string bytes_;
    std::unique_ptr<cairo_surface_t, Freed<cairo_surface_destroy>> surface_;
    std::unique_ptr<cairo_t, Freed<cairo_destroy>> cairo_;
};

} // namespace

std::string pdfOf(const PrintedStatement& statement, PaperSize size) {
    Typesetter typesetter;
    const StatementLayout layout(statement, size, typesetter);
    PdfWriter writer(size, statement.title);
    for (const StatementLayout::Page& page : layout.pages()) writer.addPage(page, typesetter);
    return writer.finish();
}

} // namespace estatebook::paper
