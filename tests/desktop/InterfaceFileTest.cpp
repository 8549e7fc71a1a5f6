// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/InterfaceFile.hpp"

#include "desktop/QtUser.hpp"
#include "platform/toolkit/WindowController.hpp"
#include "platform/toolkit/qt/QtToolkit.hpp"
#include "platform/toolkit/qt/SheetDialog.hpp"
#include "toolkit/ToolkitTestCase.hpp"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <random>

namespace estatebook::platform {
namespace {

using testing::AllOf;
using testing::HasSubstr;

QByteArray sheetFile() {
    QFile file(QStringLiteral(":/interface/Sheet.ui"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

/// "code: what".
std::string fault(const QByteArray& text) {
    std::optional<InterfaceFileFault> found;
    const auto dialog = makeFromInterfaceFile(text, found);
    EXPECT_EQ(dialog == nullptr, found.has_value());
    return found ? std::to_string(static_cast<int>(found->code)) + found->what : "none";
}

QByteArray around(const QByteArray& content) {
    return "<ui version=\"4.0\">\n<widget class=\"QDialog\" name=\"Sheet\">\n" + content +
           "\n</widget>\n</ui>\n";
}

TEST(InterfaceFileTest, AFileInOrderMakesASheet) {
    EXPECT_EQ(fault(sheetFile()), "none");
    EXPECT_EQ(fault(around("")), "none");
    EXPECT_EQ(fault(around("<widget class=\"QLabel\" name=\"label\"/>")), "none");
}

TEST(InterfaceFileTest, AClassThatIsNotOnTheListIsNamedWithItsLine) {
    for (const char* name :
         {"QWebEngineView", "QMainWindow", "QAxWidget", "", "qlabel", "QLabel ", "PaymentList"}) {
        const std::string found =
            fault(around("<widget class=\"" + QByteArray(name) + "\" name=\"foreign\"/>"));
        EXPECT_THAT(found, AllOf(HasSubstr("3, line 3: "), HasSubstr("\"" + std::string(name) + "\"")));
    }
}

TEST(InterfaceFileTest, ALayoutThatIsNotOnTheListIsNamed) {
    EXPECT_THAT(fault(around("<layout class=\"QBoxLayout\" name=\"box\"/>")), HasSubstr("QBoxLayout"));
    EXPECT_THAT(fault(around("<layout name=\"box\"/>")), HasSubstr("3, line 3"));
}

TEST(InterfaceFileTest, ClassesOfTheProgramsOwnAreRefused) {
    const QByteArray custom = "<ui version=\"4.0\"><widget class=\"QDialog\" name=\"Sheet\"/><customwidgets>"
                              "<customwidget><class>Other</class><extends>QLabel</extends></customwidget>"
                              "</customwidgets></ui>";
    EXPECT_THAT(fault(custom), AllOf(HasSubstr("3, line 1"), HasSubstr("customwidget")));
    EXPECT_THAT(fault(around("<script>alert()</script>")), HasSubstr("script"));
}

TEST(InterfaceFileTest, TheOutermostWidgetMustBeADialog) {
    EXPECT_THAT(fault("<ui version=\"4.0\"><widget class=\"QWidget\" name=\"Form\"/></ui>"),
                HasSubstr("4, line 1"));
    EXPECT_THAT(fault("<ui version=\"4.0\"><class>Sheet</class></ui>"), HasSubstr("QDialog"));
}

TEST(InterfaceFileTest, ABrokenFileIsNamedWithItsLine) {
    EXPECT_THAT(fault(""), HasSubstr("2, line 1"));
    EXPECT_THAT(fault("not a file at all"), HasSubstr("2, line 1"));
    EXPECT_THAT(fault("<html/>"), HasSubstr("<html>"));
    EXPECT_THAT(fault(QByteArray("\0\1\2", 3)), HasSubstr("2, line"));
    EXPECT_THAT(fault("<ui version=\"4.0\">\n<widget class=\"QDialog\">\n</ui>"), HasSubstr("2, line 3"));
    EXPECT_THAT(fault("<!DOCTYPE ui [<!ENTITY a \"b\">]><ui version=\"4.0\"/>"), HasSubstr("document type"));
}

TEST(InterfaceFileTest, AFileWithoutEndIsRefusedBeforeItUsesUpTheStack) {
    QByteArray deep;
    for (int depth = 0; depth < 100'000; ++depth) deep += "<widget class=\"QWidget\">";
    EXPECT_THAT(fault(around(deep)), HasSubstr("nested"));
    EXPECT_THAT(fault(around(QByteArray(5 << 20, ' '))), HasSubstr("larger"));
}

TEST(InterfaceFileTest, EveryFileCutShortIsNamedAndNoneBringsTheProgramDown) {
    const QByteArray whole = sheetFile();
    const qsizetype end = whole.lastIndexOf("</ui>") + 5;
    for (qsizetype size = 0; size < end; size += 7) EXPECT_NE(fault(whole.first(size)), "none") << size;
}

TEST(InterfaceFileTest, RowsThatNoWindowHasAreRefused) {
    const auto faultWith = [](const QByteArray& place) {
        return fault("<ui version=\"4.0\"><widget class=\"QDialog\" name=\"d\"><layout class=\"QFormLayout\">"
                     "<item " +
                     place + "><widget class=\"QLabel\" name=\"l\"/></item></layout></widget></ui>");
    };
    EXPECT_EQ(faultWith("row=\"3\" column=\"0\""), "none");
    EXPECT_NE(faultWith("row=\"999999999\" column=\"0\""), "none")
        << "a layout makes room for each row before";
    EXPECT_NE(faultWith("row=\"-1\" column=\"0\""), "none");
    EXPECT_NE(faultWith("row=\"x\" column=\"0\""), "none");
    EXPECT_NE(faultWith("row=\"0\" column=\"0\" colspan=\"99999\""), "none");
    EXPECT_NE(fault("<ui version=\"4.0\"><widget class=\"QDialog\" name=\"d\"><widget class=\"QTableWidget\" "
                    "name=\"t\"><property name=\"rowCount\"><number>999999999</number></property></widget>"
                    "</widget></ui>"),
              "none");
}

TEST(InterfaceFileTest, TwoItemsInOneCellOfAFormAreRefused) {
    const auto faultWith = [](const QByteArray& layout, const QByteArray& first, const QByteArray& second) {
        const QByteArray label = "<widget class=\"QLabel\"/></item>";
        return fault("<ui version=\"4.0\"><widget class=\"QDialog\" name=\"d\"><layout class=\"" + layout +
                     "\"><item " + first + ">" + label + "<item " + second + ">" + label +
                     "</layout></widget></ui>");
    };
    EXPECT_EQ(faultWith("QFormLayout", "row=\"1\" column=\"0\"", "row=\"1\" column=\"1\""), "none");
    EXPECT_EQ(faultWith("QFormLayout", "row=\"1\" column=\"0\"", "row=\"2\" column=\"0\""), "none");
    EXPECT_THAT(faultWith("QFormLayout", "row=\"1\" column=\"0\"", "row=\"1\" column=\"0\""),
                HasSubstr("two items"));
    EXPECT_THAT(faultWith("QFormLayout", "", "row=\"0\" column=\"0\""), HasSubstr("two items"))
        << "without a place it is the first cell";
    EXPECT_THAT(faultWith("QFormLayout", "row=\"1\" column=\"0\" colspan=\"2\"", "row=\"1\" column=\"1\""),
                HasSubstr("two items"))
        << "what reaches over both columns stands in the second";
    EXPECT_EQ(faultWith("QGridLayout", "row=\"1\" column=\"0\"", "row=\"1\" column=\"0\""), "none")
        << "a grid keeps both";
}

TEST(InterfaceFileTest, NoDamageBringsTheProgramDown) {
    const QByteArray whole = sheetFile();
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](std::size_t bound) { return static_cast<qsizetype>(random() % bound); };
    const QByteArray pieces[] = {"<",
                                 ">",
                                 "\"",
                                 "QLabel",
                                 "</widget>",
                                 "<widget class=\"QDialog\">",
                                 "-1",
                                 "999999999",
                                 "</layout>",
                                 "<item>",
                                 "<property name=\"x\">",
                                 "<layout class=\"QGridLayout\">"};
    for (int times = 0; times < 500; ++times) {
        QByteArray damaged = whole;
        for (qsizetype changes = 1 + below(4); changes > 0; --changes) {
            const qsizetype at = below(static_cast<std::size_t>(damaged.size()));
            switch (below(3)) {
            case 0:
                damaged.remove(at, 1 + below(40));
                break;
            case 1:
                damaged.insert(at, pieces[below(std::size(pieces))]);
                break;
            default:
                damaged[at] = static_cast<char>(below(256));
            }
        }
        std::optional<InterfaceFileFault> found;
        const auto dialog = makeFromInterfaceFile(damaged, found);
        EXPECT_EQ(dialog == nullptr, found.has_value()) << damaged.toStdString();
    }
}

class InterfaceFolderTest : public test::ToolkitTestCase {
protected:
    void write(const char* name, const QByteArray& text) {
        QFile file(folder.filePath(QLatin1String(name) + QLatin1String(".ui")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QTemporaryDir folder;
    QtToolkit toolkit{folder.path()};
};

TEST_F(InterfaceFolderTest, WhatIsWrongIsToldInOneSentenceWithTheFile) {
    write("Broken", "<ui version=\"4.0\">");
    Toolkit::setCurrent(&toolkit);
    const auto controller = makeRef<test::PlainController>("Broken");
    EXPECT_FALSE(controller->window());
    ASSERT_TRUE(controller->loadError());
    EXPECT_EQ(controller->loadError()->code(), static_cast<std::int64_t>(InterfaceFileError::Broken));
    EXPECT_THAT(controller->loadError()->localizedDescription(),
                AllOf(HasSubstr("Broken.ui"), HasSubstr("line")));
    EXPECT_THAT(logged, testing::ElementsAre(HasSubstr("Broken.ui")));
}

TEST_F(InterfaceFolderTest, AnActionOnSomethingThatIsNoControlIsNamed) {
    write("Label", around("<widget class=\"QLabel\" name=\"label\"><property name=\"action\" stdset=\"0\">"
                          "<string>processSheet:</string></property></widget>"));
    Toolkit::setCurrent(&toolkit);
    const auto controller = makeRef<test::PlainController>("Label");
    EXPECT_FALSE(controller->window());
    EXPECT_THAT(controller->loadError()->localizedDescription(),
                AllOf(HasSubstr("label"), HasSubstr("processSheet:")));
}

} // namespace
} // namespace estatebook::platform
