// SPDX-License-Identifier: MIT
#pragma once

/// Other programs, in processes of their own: one that edits a book as it is told (editor/main.cpp), and the command line.

#include "desktop/QtUser.hpp"

#include <gtest/gtest.h>

#include <QProcess>
#include <QString>

#include <string>

namespace estatebook::desktop::test {

class Editor {
public:
    /// Has the book open when it is made.
    explicit Editor(const std::string& book) {
        process_.start(QStringLiteral(ESTATEBOOK_TEST_EDITOR), {QString::fromStdString(book)});
        EXPECT_EQ(answer(), "open") << errors();
    }
    ~Editor() {
        if (process_.state() != QProcess::NotRunning) kill();
    }
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    /// Waits until it has done so. "saved", "edited" or "stuck"; empty when it has ended.
    std::string tell(const std::string& line) {
        tellOnly(line);
        return answer();
    }
    /// Waits for nothing.
    void tellOnly(const std::string& line) {
        process_.write((line + "\n").c_str());
        process_.waitForBytesWritten(Patience);
    }
    /// It ends as programs should; false when it does not.
    [[nodiscard]] bool end() {
        process_.closeWriteChannel();
        return process_.waitForFinished(Patience) && process_.exitStatus() == QProcess::NormalExit &&
               process_.exitCode() == 0;
    }
    void kill() {
        process_.kill();
        process_.waitForFinished(Patience);
    }
    [[nodiscard]] std::string errors() { return process_.readAllStandardError().toStdString(); }

private:
    /// In milliseconds; long, for machines that are at something else.
    static constexpr int Patience = 60'000;

    std::string answer() {
        while (!process_.canReadLine())
            if (!process_.waitForReadyRead(Patience)) return {};
        return process_.readLine().trimmed().toStdString();
    }

    QProcess process_;
};

/// What a command printed, and how it ended.
struct Printed {
    int exitCode = -1;
    std::string out;
    std::string errors;

    static Printed by(const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral(ESTATEBOOK_TEST_PROGRAM), arguments);
        process.waitForFinished();
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }
};

} // namespace estatebook::desktop::test
