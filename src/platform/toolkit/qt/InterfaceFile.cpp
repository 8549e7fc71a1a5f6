// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/InterfaceFile.hpp"

#include "platform/toolkit/qt/QtText.hpp"
#include "platform/toolkit/qt/SheetDialog.hpp"

#include <QBuffer>
#include <QUiLoader>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <set>
#include <utility>
#include <vector>

namespace estatebook::platform {

namespace {

constexpr std::array<std::string_view, 37> allowedWidgets = {
    "Line",          "QCheckBox",    "QComboBox",        "QDateEdit",
    "QDateTimeEdit", "QDialog",      "QDialogButtonBox", "QDoubleSpinBox",
    "QFrame",        "QGroupBox",    "QLabel",           "QLineEdit",
    "QListView",     "QListWidget",  "QPlainTextEdit",   "QProgressBar",
    "QPushButton",   "QRadioButton", "QScrollArea",      "QSlider",
    "QSpinBox",      "QSplitter",    "QStackedWidget",   "QTabWidget",
    "QTableView",    "QTableWidget", "QTextBrowser",     "QTextEdit",
    "QTimeEdit",     "QToolBox",     "QToolButton",      "QTreeView",
    "QTreeWidget",   "QWidget",      "QCalendarWidget",  "QCommandLinkButton",
    "QFontComboBox",
};
constexpr std::array<std::string_view, 4> allowedLayouts = {"QVBoxLayout", "QHBoxLayout", "QGridLayout",
                                                            "QFormLayout"};

/// More of either is no window that somebody drew, and would use up the stack or the time.
constexpr qsizetype MostBytes = 4 << 20;
constexpr int DeepestElement = 200;
/// A layout makes room for all rows up to the last one.
constexpr int FurthestCell = 500;

template <std::size_t Size>
bool holds(const std::array<std::string_view, Size>& list, const QString& name) {
    return std::ranges::find(list, textOf(name)) != list.end();
}

/// Reads the file once from front to back.
class Inspection {
public:
    explicit Inspection(const QByteArray& text) : reader_(text) {}

    std::optional<InterfaceFileFault> fault() {
        while (!reader_.atEnd() && !fault_) inspect(reader_.readNext());
        if (!fault_ && reader_.hasError()) find(InterfaceFileError::Broken, textOf(reader_.errorString()));
        if (!fault_ && !hasWindow_) find(InterfaceFileError::NoWindow, "it holds no QDialog");
        return fault_;
    }

private:
    void inspect(QXmlStreamReader::TokenType token) {
        if (token == QXmlStreamReader::DTD)
            find(InterfaceFileError::Broken, "a document type has no place in it");
        else if (token == QXmlStreamReader::EndElement)
            leaveElement();
        else if (token == QXmlStreamReader::StartElement)
            inspectElement(reader_.name().toString());
    }

    void inspectElement(const QString& name) {
        ++depth_;
        const QString className = reader_.attributes().value(QLatin1String("class")).toString();
        if (depth_ > DeepestElement)
            find(InterfaceFileError::Broken, "it is nested more deeply than any window");
        else if (depth_ == 1 && name != QLatin1String("ui"))
            find(InterfaceFileError::Broken, "it begins with <" + textOf(name) + "> in the place of <ui>");
        else if (name == QLatin1String("widget"))
            inspectWidget(className);
        else if (name == QLatin1String("layout"))
            inspectLayout(className);
        else if (name == QLatin1String("item"))
            inspectPlace();
        else if (name == QLatin1String("property"))
            inspectProperty(reader_.attributes().value(QLatin1String("name")).toString());
        else if (name == QLatin1String("customwidget") || name == QLatin1String("script"))
            find(InterfaceFileError::ForeignClass, "<" + textOf(name) + "> has no place in it");
    }

    void leaveElement() {
        if (!layouts_.empty() && layouts_.back().depth == depth_) layouts_.pop_back();
        --depth_;
    }

    void inspectLayout(const QString& className) {
        if (holds(allowedLayouts, className))
            layouts_.push_back({depth_, className == QLatin1String("QFormLayout"), {}});
        else
            findForeign(className);
    }

    void inspectWidget(const QString& className) {
        if (!holds(allowedWidgets, className))
            findForeign(className);
        else if (depth_ == 2 && className == QLatin1String("QDialog"))
            hasWindow_ = true;
        else if (depth_ == 2)
            find(InterfaceFileError::NoWindow,
                 "its outermost widget is a " + textOf(className) + ", not a QDialog");
    }

    void inspectPlace() {
        for (const char* const name : {"row", "column", "rowspan", "colspan"}) {
            if (!reader_.attributes().hasAttribute(QLatin1String(name))) continue;
            bool isNumber = false;
            const int place = reader_.attributes().value(QLatin1String(name)).toInt(&isNumber);
            if (!isNumber || place < 0 || place > FurthestCell)
                return find(InterfaceFileError::Broken,
                            "the " + std::string(name) + " of an item is none that a window has");
        }
        if (!layouts_.empty() && layouts_.back().isForm && layouts_.back().depth == depth_ - 1) inspectCell();
    }

    /// A form would lose the second item of a cell, and nothing would ever free it.
    void inspectCell() {
        const auto place = [&](const char* name) {
            return reader_.attributes().value(QLatin1String(name)).toInt();
        };
        const bool isField = place("column") > 0 || place("colspan") > 1;
        if (!layouts_.back().cells.insert({place("row"), isField}).second)
            find(InterfaceFileError::Broken, "a form has two items in one cell");
    }

    void inspectProperty(const QString& name) {
        if (name == QLatin1String("rowCount") || name == QLatin1String("columnCount"))
            find(InterfaceFileError::Broken, "the size of a table has no place in it");
    }

    void findForeign(const QString& className) {
        find(InterfaceFileError::ForeignClass,
             "the class \"" + textOf(className) + "\" is none that a window may hold");
    }
    void find(InterfaceFileError code, std::string_view what) {
        fault_ = InterfaceFileFault{code, ", line " + std::to_string(reader_.lineNumber()) + ": " +
                                              std::string(what)};
    }

    struct Layout {
        int depth;
        bool isForm;
        std::set<std::pair<int, bool>> cells; ///< row, and whether it is the field's
    };

    QXmlStreamReader reader_;
    int depth_ = 0;
    std::vector<Layout> layouts_; ///< from the outermost to the one that is read
    bool hasWindow_ = false;
    std::optional<InterfaceFileFault> fault_;
};

/// Makes dialogs that can be sheets, and nothing that was not looked for above.
class Loader final : public QUiLoader {
public:
    Loader() { clearPluginPaths(); }

    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override {
        if (className == QLatin1String("QDialog") && !parent) {
            auto* dialog = new SheetDialog;
            dialog->setObjectName(name);
            return dialog;
        }
        return holds(allowedWidgets, className) ? QUiLoader::createWidget(className, parent, name) : nullptr;
    }
    QLayout* createLayout(const QString& className, QObject* parent, const QString& name) override {
        return holds(allowedLayouts, className) ? QUiLoader::createLayout(className, parent, name) : nullptr;
    }
};

} // namespace

std::optional<InterfaceFileFault> faultInInterfaceFile(const QByteArray& text) {
    if (text.size() > MostBytes)
        return InterfaceFileFault{InterfaceFileError::Broken, " is larger than any window"};
    return Inspection(text).fault();
}

std::unique_ptr<SheetDialog> makeFromInterfaceFile(const QByteArray& text,
                                                   std::optional<InterfaceFileFault>& fault) {
    fault = faultInInterfaceFile(text);
    if (fault) return nullptr;
    QBuffer buffer;
    buffer.setData(text);
    buffer.open(QIODevice::ReadOnly);
    Loader loader;
    std::unique_ptr<QWidget> widget(loader.load(&buffer));
    if (auto* dialog = dynamic_cast<SheetDialog*>(widget.get())) {
        static_cast<void>(widget.release());
        return std::unique_ptr<SheetDialog>(dialog);
    }
    fault = InterfaceFileFault{InterfaceFileError::Broken, ": " + textOf(loader.errorString())};
    return nullptr;
}

} // namespace estatebook::platform
