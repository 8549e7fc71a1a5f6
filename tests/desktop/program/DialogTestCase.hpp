// SPDX-License-Identifier: MIT
#pragma once

/// The window with a user who goes through its menus, buttons and dialogs, and looks at the files that come of it.

#include "desktop/program/MainWindowTestCase.hpp"

#include <QProcess>
#include <QPushButton>

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace estatebook::desktop::test {

class DialogTestCase : public MainWindowTestCase {
protected:
    void trigger(const char* action) {
        auto* found = window_->findChild<QAction*>(QLatin1String(action));
        ASSERT_TRUE(found && found->isEnabled()) << action;
        found->trigger();
        estatebook::test::settle();
    }
    void pressButton(const char* text) {
        const auto buttons = window_->findChildren<QPushButton*>();
        for (QPushButton* button : buttons)
            if (button->isVisible() && button->text() == QString::fromUtf8(text))
                return estatebook::test::click(*button);
        FAIL() << "no " << text;
    }
    void showStatement() {
        openExample();
        selectRowOf(Page::Tenures, "M. Jones");
        trigger("statement");
    }
    [[nodiscard]] QString file(std::string_view name) const { return QString::fromStdString(path(name)); }
    [[nodiscard]] static std::string contentOf(const QString& file) {
        std::ifstream stream(file.toStdString(), std::ios::binary);
        std::ostringstream text;
        text << stream.rdbuf();
        return text.str();
    }
    /// What can be read on the pages.
    [[nodiscard]] static std::string textOfPdf(const QString& file) {
        QProcess process;
        process.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), file, QStringLiteral("-")});
        process.waitForFinished();
        return process.readAllStandardOutput().toStdString();
    }
};

} // namespace estatebook::desktop::test
