// SPDX-License-Identifier: MIT
#include "estatebook-desktop/screenshots/Screenshots.hpp"

#include "estatebook-desktop/sheets/BookSheet.hpp"
#include "estatebook-desktop/window/MainWindow.hpp"

#include "platform/system/Clock.hpp"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <unordered_map>
#include <utility>
#include <vector>

namespace estatebook::desktop {

namespace {

/// 30 June 2026, noon in London.
constexpr platform::Date Today{804510000};

/// With the colours that it has most of, the others moved to the nearest of them, so that its file is small.
QImage withFewColours(const QImage& picture) {
    constexpr std::size_t MostColours = 256;
    const QImage whole = picture.convertToFormat(QImage::Format_RGB32);
    std::unordered_map<QRgb, std::size_t> counts;
    const auto forEachPixel = [&](const auto& visit) {
        for (int y = 0; y < whole.height(); ++y) {
            const auto* line = reinterpret_cast<const QRgb*>(whole.constScanLine(y));
            for (int x = 0; x < whole.width(); ++x) visit(x, y, line[x]);
        }
    };
    forEachPixel([&](int, int, QRgb colour) { ++counts[colour]; });
    std::vector<std::pair<QRgb, std::size_t>> most(counts.begin(), counts.end());
    std::ranges::sort(most, [](const auto& a, const auto& b) {
        return std::pair(b.second, b.first) < std::pair(a.second, a.first);
    });
    most.resize(std::min(most.size(), MostColours));

    const auto distance = [](QRgb a, QRgb b) {
        const int red = qRed(a) - qRed(b), green = qGreen(a) - qGreen(b), blue = qBlue(a) - qBlue(b);
        return red * red + green * green + blue * blue;
    };
    std::unordered_map<QRgb, uchar> places;
    for (const auto& [colour, count] : counts) {
        const auto nearest = std::ranges::min_element(
            most, {}, [&, wanted = colour](const auto& each) { return distance(each.first, wanted); });
        places.emplace(colour, static_cast<uchar>(nearest - most.begin()));
    }
    QImage small(whole.size(), QImage::Format_Indexed8);
    small.setColorCount(static_cast<int>(most.size()));
    for (std::size_t i = 0; i < most.size(); ++i) small.setColor(static_cast<int>(i), most[i].first);
    forEachPixel([&](int x, int y, QRgb colour) { small.scanLine(y)[x] = places.at(colour); });
    return small;
}

class Photographer {
public:
    Photographer(QString folder, QString suffix) : folder_(std::move(folder)), suffix_(std::move(suffix)) {}

    void take(QWidget& window, const QString& name) {
        QApplication::processEvents();
        const QString path = QStringLiteral("%1/%2-%3.png").arg(folder_, name, suffix_);
        if (!withFewColours(window.grab().toImage()).save(path)) {
            QTextStream(stderr) << QCoreApplication::translate(
                                       "Program",
                                       "%1: it cannot be written; check the folder and the room on the disk")
                                       .arg(path)
                                << '\n';
            exitCode_ = 1;
        }
    }
    [[nodiscard]] int exitCode() const noexcept { return exitCode_; }

private:
    QString folder_;
    QString suffix_;
    int exitCode_ = 0;
};

TKTenure* tenureOf(const MainWindow& window, const char* tenant) {
    const auto tenures = window.session()->tenures();
    for (const auto& tenure : tenures)
        if (textOf(tenure->name()).contains(QLatin1String(tenant))) return tenure.get();
    return nullptr;
}

} // namespace

int makeScreenshots(const QString& folder) {
    if (!QDir().mkpath(folder)) {
        QTextStream(stderr) << QCoreApplication::translate("Program",
                                                           "%1: it cannot be made; choose another folder")
                                   .arg(folder)
                            << '\n';
        return 1;
    }
    for (const char* appearance : {"light", "dark", "contrast"})
        for (const char* scale : {"1", "2"}) {
            QProcess process;
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
            environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QLatin1String(scale));
            environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("en_GB.UTF-8"));
            process.setProcessEnvironment(environment);
            process.setProcessChannelMode(QProcess::ForwardedChannels);
            process.start(QApplication::applicationFilePath(),
                          {QStringLiteral("--appearance"), QLatin1String(appearance),
                           QStringLiteral("--screenshots-here"), folder, QStringLiteral("--suffix"),
                           QStringLiteral("%1-%2").arg(QLatin1String(appearance), QLatin1String(scale))});
            if (!process.waitForFinished(-1) || process.exitCode() != 0) return 1;
        }
    return 0;
}

int makeScreenshotsHere(const QString& folder, const QString& suffix) {
    platform::Clock::setNow([] { return Today; });
    const QTemporaryDir books;
    DesktopLoop loop;
    MainWindow window(loop);
    Photographer photographer(folder, suffix);
    window.show();
    photographer.take(window, QStringLiteral("welcome"));
    if (!window.openExample(books.filePath(QStringLiteral("Harbour Street.estatebook")))) return 1;
    const auto takePage = [&](MainWindow::Page page, const QString& name) {
        window.showPage(page);
        window.refreshNow();
        if (page != MainWindow::Page::Settings) window.list(page).table().selectRow(2);
        photographer.take(window, name);
    };
    takePage(MainWindow::Page::Tenures, QStringLiteral("lettings"));
    takePage(MainWindow::Page::Properties, QStringLiteral("properties"));
    takePage(MainWindow::Page::Tenants, QStringLiteral("tenants"));
    takePage(MainWindow::Page::Arrears, QStringLiteral("arrears"));
    takePage(MainWindow::Page::Settings, QStringLiteral("settings"));
    const auto takeSheet = [&](MainWindow::Page page, int row, const char* action, const QString& name) {
        window.showPage(page);
        window.refreshNow();
        window.list(page).table().selectRow(row);
        window.findChild<QAction*>(QLatin1String(action))->trigger();
        if (!window.sheet()) return;
        photographer.take(*window.sheet()->qtWindow().widget(), name);
        window.sheet()->cancelSheet();
    };
    takeSheet(MainWindow::Page::Tenures, 2, "edit", QStringLiteral("sheet-letting"));
    takeSheet(MainWindow::Page::Tenures, 0, "add", QStringLiteral("sheet-new-letting"));
    takeSheet(MainWindow::Page::Tenures, 2, "pay", QStringLiteral("sheet-payment"));
    takeSheet(MainWindow::Page::Properties, 0, "notes", QStringLiteral("sheet-notes"));
    takeSheet(MainWindow::Page::Properties, 1, "edit", QStringLiteral("sheet-property"));
    takeSheet(MainWindow::Page::Tenants, 0, "edit", QStringLiteral("sheet-tenant"));
    window.showPage(MainWindow::Page::Tenures);
    if (TKTenure* tenure = tenureOf(window, "M. Jones")) {
        window.showStatementOf(*tenure);
        photographer.take(window, QStringLiteral("statement"));
    }
    if (!window.makeBook(books.filePath(QStringLiteral("My Properties.estatebook")))) return 1;
    takePage(MainWindow::Page::Tenures, QStringLiteral("empty"));
    window.lookAtBook(books.filePath(QStringLiteral("Gone.estatebook")));
    photographer.take(window, QStringLiteral("refused"));
    return photographer.exitCode();
}

} // namespace estatebook::desktop
