// SPDX-License-Identifier: MIT
#include "estatebook/CommandLine.hpp"

#include "estatebook/Failure.hpp"
#include "estatebook/HeldOutput.hpp"
#include "estatebook/Reckoned.hpp"
#include "estatebook/book/StoredBook.hpp"
#include "estatebook/commands/Commands.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/system/Log.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <iostream>
#include <new>
#include <string>
#include <vector>

namespace estatebook {

namespace {

constexpr std::uint64_t MaximalCount = 1'000'000;
constexpr std::size_t LongestUsageText = 300;

Format formatNamed(std::string_view name) noexcept {
    return name == "csv"    ? Format::Csv
           : name == "json" ? Format::Json
           : name == "pdf"  ? Format::Pdf
                            : Format::Text;
}

/// A value that is empty comes of a variable of the shell that is not set, and means nothing.
CLI::Validator notEmpty(const char* advice) {
    return {[advice](std::string& value) {
                return value.empty() ? std::string("it is empty; ") + advice : std::string();
            },
            ""};
}
CLI::Validator aValue() {
    return notEmpty("give a value, or leave it out");
}
CLI::Validator aName() {
    return notEmpty("give a name");
}
/// What stands for standard input elsewhere would be a file of that name here.
CLI::Validator aFile() {
    const auto isFile = [](std::string& value) {
        return value == "-" ? std::string("- is no file; name one, such as ./-") : std::string();
    };
    return aName() & CLI::Validator(isFile, "");
}

/// All commands with their options. What was parsed stays in here.
class Program {
public:
    Program() {
        app_.name("estatebook");
        app_.description(
            "Keeps the books of rental properties: statements, what is due, and every other figure.");
        app_.set_version_flag("--version", "estatebook " ESTATEBOOK_VERSION);
        app_.add_flag("--verbose", isVerbose_, "Write diagnostics to standard error, not to the system log");
        app_.require_subcommand(0, 1);
        app_.fallthrough();

        CLI::App* statement = add("statement", "Print a tenure's statement with its running balance",
                                  [this] { printStatement(statement_, std::cout); });
        addTenure(*statement, statement_.tenure);
        addBook(*statement, statement_.list.book);
        addFormat(*statement, statement_.list, "text, csv, json or pdf", {"text", "csv", "json", "pdf"});
        addParts(*statement, statement_);
        statement->add_option("--output", statement_.output, "Write to this file, whole or not at all")
            ->check(aFile())
            ->option_text("FILE");
        CLI::App* statements = add("statements", "Print the statements of all tenures, one after another",
                                   [this] { printStatements(statements_, std::cout); });
        addBook(*statements, statements_.list.book);
        addFormat(*statements, statements_.list, "text or csv", {"text", "csv"});
        addParts(*statements, statements_);

        addList("tenures", "List all tenures with their balances", tenures_, printTenures);
        addList("properties", "List all properties with what they bring in", properties_, printProperties);
        addList("tenants", "List all tenants with what they paid and owe", tenants_, printTenants);
        addList("due", "List what is owed, and when the next period begins", due_, printDue);
        addList("arrears", "List who owes what, since when, and how old the debts are", arrears_,
                printArrears);
        addList("rent-roll", "List who rents what, paid to when, and what comes next", rentRoll_,
                printRentRoll);

        CLI::App* income = add("income", "List what came in and went out, month by month",
                               [this] { printIncome(income_, std::cout); });
        addList(*income, income_.list);
        income->add_option("--property", income_.property, "Only this property: its identifier or name")
            ->check(aValue())
            ->option_text("PROPERTY");
        income->add_option("--months", income_.months, "Only so many months up to now")
            ->check(CLI::Range(std::uint64_t{1}, MaximalCount))
            ->option_text("N");

        CLI::App* bonds = add("bonds", "List the bonds: charged, paid, released, returned and held",
                              [this] { printBonds(bonds_, std::cout); });
        addList(*bonds, bonds_.list);
        bonds
            ->add_option("--tag", bonds_.tag,
                         "What adjustments of bonds are tagged with, else Bond; empty: all are of bonds")
            ->option_text("NAME");

        addList("notes", "Print the notes on properties, tenants and tenures", notes_, printNotes);

        CLI::App* schedule = add("schedule", "List the rent periods of a tenure",
                                 [this] { printSchedule(schedule_, std::cout); });
        addTenure(*schedule, schedule_.tenure);
        addBook(*schedule, schedule_.book);
        schedule
            ->add_option("--count", schedule_.count,
                         "How many periods from the start, charged or not; else those charged by now")
            ->check(CLI::Range(std::uint64_t{1}, MaximalCount))
            ->option_text("N");

        CLI::App* values = add("values", "Print every derived value as a JSON document",
                               [this] { printValues(values_, std::cout); });
        addBook(*values, values_);

        CLI::App* watch = add("watch", "Print the arrears again whenever the book or the day changes",
                              [this] { watchArrears(watch_, std::cout); });
        watch->add_option("BOOK", watch_.file, "The book: a document or a book file")
            ->required()
            ->check(aName())
            ->option_text(" ");
        addDay(*watch, watch_);

        addBookFiles();
    }

    void parse(int argumentCount, const char* const* arguments) {
        try {
            app_.parse(argumentCount, arguments);
        } catch (const CLI::ExtrasError&) {
            // As they were written; the exception tells the last one first.
            const auto unexpected = app_.remaining(true);
            throw CLI::ParseError(fmt::format("The following {} not expected: {}",
                                              unexpected.size() == 1 ? "argument was" : "arguments were",
                                              fmt::join(unexpected, " ")),
                                  CLI::ExitCodes::ExtrasError);
        }
    }
    /// Prints help or version, as asked for.
    void answer(const CLI::Success& success) { app_.exit(success, std::cout, std::cerr); }

    void run() {
        if (isVerbose_)
            platform::Log::setSink(
                [](std::string_view line) { std::cerr << "estatebook: " << line << '\n'; });
        for (const auto& [command, action] : actions_)
            if (*command) return std::ranges::any_of(books_, isNamedBookFile) ? runHeld(action) : action();
        throw Failure(ExitCode::WrongUsage, "no command is given; see: estatebook --help");
    }

private:
    /// The commands that make books, carry them in and out, and look after them.
    void addBookFiles() {
        CLI::App* init = add("init", "Make a new, empty book file", [this] { initBook(init_); });
        addFile(*init, init_.file, "The book file to be made");
        init->add_option("--time-zone", init_.timeZone,
                         "The zone of the book, such as Europe/London; else that of this computer")
            ->check(aValue())
            ->option_text("ZONE");
        init->add_option("--currency", init_.currency, "The code of the currency, such as GBP")
            ->check(aValue())
            ->option_text("CODE");
        init->add_option_function<std::string>(
                "--billing-mode", [this](const std::string& mode) { init_.billsAtEnd = mode == "end"; },
                "Whether periods are billed at their start or at their end: start or end, else start")
            ->check(CLI::IsMember({"start", "end"}))
            ->option_text("MODE");

        CLI::App* import = add("import", "Take a book document into a new book file, or into an empty one",
                               [this] { importBook(import_); });
        import->add_option("DOCUMENT", import_.document, "The book document; - is standard input")
            ->required()
            ->check(aName())
            ->option_text(" ");
        addFile(*import, import_.file, "The book file");

        CLI::App* exporting =
            add("export", "Print a book as a document", [this] { exportBook(export_, std::cout); });
        addFile(*exporting, export_.file, "The book: a book file or a document", aName());
        exporting->add_flag("--partial", export_.isPartial, "Leave out what a document cannot carry");

        CLI::App* check =
            add("check", "Look whether a book file is sound", [this] { checkBook(check_, std::cout); });
        addFile(*check, check_.file, "The book file");
        check
            ->add_option("--salvage", check_.salvage,
                         "Copy what can be read to a new file, and list what cannot")
            ->check(aFile())
            ->option_text("OUT");

        CLI::App* backup =
            add("backup", "Make a checked copy of a book file", [this] { backUpBook(backup_, std::cout); });
        addFile(*backup, backup_.file, "The book file");
        backup->add_option("COPY", backup_.copy, "The copy; else that of this day, in the folder NAME.copies")
            ->check(aFile())
            ->option_text(" ");

        CLI::App* restore =
            add("restore", "Make a new book file of a copy", [this] { restoreBook(restore_, std::cout); });
        restore->add_option("COPY", restore_.copy, "The copy")->required()->check(aFile())->option_text(" ");
        restore->add_option("--to", restore_.file, "The new book file")
            ->required()
            ->check(aFile())
            ->option_text("NEW");

        CLI::App* migrate = add("migrate", "Bring a book file of an earlier version up to date",
                                [this] { migrateBook(migratedFile_, std::cout); });
        addFile(*migrate, migratedFile_, "The book file");

        CLI::App* info = add("info", "Tell what a book file holds, and who saved it last",
                             [this] { printInfo(describedFile_, std::cout); });
        addFile(*info, describedFile_, "The book file");
    }

    static void addFile(CLI::App& command, std::string& file, const char* description,
                        const CLI::Validator& validator = aFile()) {
        command.add_option("FILE", file, description)->required()->check(validator)->option_text(" ");
    }

    static bool isNamedBookFile(const std::string* file) { return !file->empty() && isBookFile(*file); }
    /// Writes nothing before all is reckoned and the book is closed: who pages through a long list would keep others from saving
    /// the book meanwhile.
    static void runHeld(const std::function<void()>& action) {
        std::streambuf* const out = std::cout.rdbuf();
        HeldOutput held;
        std::cout.rdbuf(&held);
        try {
            action();
        } catch (...) {
            std::cout.rdbuf(out);
            throw;
        }
        // Putting the other buffer in place forgets that there was no room in this one.
        const bool isWhole = std::cout.good();
        std::cout.rdbuf(out);
        if (!isWhole) throw std::bad_alloc();
        held.release(std::cout);
    }

    CLI::App* add(const char* name, const char* description, std::function<void()> action) {
        CLI::App* command = app_.add_subcommand(name, description);
        actions_.emplace_back(command, std::move(action));
        return command;
    }

    static void addTenure(CLI::App& command, std::string& tenure) {
        command
            .add_option("TENURE", tenure,
                        "The tenure: its identifier, its name, or a part of its name that no other has")
            ->required()
            ->option_text(" ");
    }

    static void addParts(CLI::App& command, StatementOptions& options) {
        command.add_flag("--exact", options.exact, "Print all digits and round nothing");
        command.add_flag("--outstanding", options.outstanding,
                         "Only the lines since the balance last was zero or more");
        command.add_flag("--by-tag", options.byTag, "A part for each primary tag");
    }

    void addBook(CLI::App& command, BookOptions& options) {
        books_.push_back(&options.file);
        command
            .add_option("--book", options.file,
                        "The book: a document or a book file; - is a document on standard input")
            ->required()
            ->check(aName())
            ->option_text("FILE");
        addDay(command, options);
    }

    static void addDay(CLI::App& command, BookOptions& options) {
        command
            .add_option("--as-of", options.asOf,
                        "The day that counts as today, such as 2025-03-31, or an instant; else now")
            ->check(aValue())
            ->option_text("DATE");
    }

    void addList(CLI::App& command, ListOptions& options) {
        addBook(command, options.book);
        addFormat(command, options, "text, csv or json", {"text", "csv", "json"});
    }
    static void addFormat(CLI::App& command, ListOptions& options, const char* description,
                          std::initializer_list<const char*> names) {
        command
            .add_option_function<std::string>(
                "--format", [&](const std::string& name) { options.format = formatNamed(name); }, description)
            ->check(CLI::IsMember(names))
            ->option_text("FORMAT");
    }
    void addList(const char* name, const char* description, ListOptions& options,
                 void (*print)(const ListOptions&, std::ostream&)) {
        addList(*add(name, description, [&options, print] { print(options, std::cout); }), options);
    }

    CLI::App app_;
    bool isVerbose_ = false;
    StatementOptions statement_;
    StatementOptions statements_;
    ListOptions tenures_;
    ListOptions properties_;
    ListOptions tenants_;
    ListOptions due_;
    ListOptions arrears_;
    ListOptions rentRoll_;
    IncomeOptions income_;
    BondOptions bonds_;
    ListOptions notes_;
    ScheduleOptions schedule_;
    BookOptions values_;
    BookOptions watch_;
    InitOptions init_;
    ImportOptions import_;
    ExportOptions export_;
    CheckOptions check_;
    BackupOptions backup_;
    RestoreOptions restore_;
    std::string migratedFile_;
    std::string describedFile_;
    /// The books of all commands that print from one; that of the given command is not empty.
    std::vector<const std::string*> books_;
    std::vector<std::pair<CLI::App*, std::function<void()>>> actions_;
};

/// A line about a file begins with its name, any other with the program's.
int report(ExitCode code, std::string_view text, bool isAboutFile = false) {
    std::cout.flush();
    std::cerr << (isAboutFile ? "" : "estatebook: ") << text << '\n';
    return static_cast<int>(code);
}

int runChecked(int argumentCount, const char* const* arguments) {
    Program program;
    try {
        program.parse(argumentCount, arguments);
        program.run();
    } catch (const CLI::Success& success) {
        program.answer(success);
    } catch (const CLI::ParseError& error) {
        return report(ExitCode::WrongUsage,
                      document::forMessage(error.what(), LongestUsageText) + "; see: estatebook --help");
    }
    if (!std::cout.flush())
        return report(ExitCode::CannotRead,
                      "standard output cannot be written; make room for it, or write elsewhere");
    return static_cast<int>(ExitCode::Good);
}

} // namespace

int runCommandLine(int argumentCount, const char* const* arguments) {
    std::ios::sync_with_stdio(false);
    try {
        return runChecked(argumentCount, arguments);
    } catch (const Failure& failure) {
        return report(failure.code(), failure.what(), failure.isAboutFile());
    } catch (const platform::ObjectInaccessibleException& exception) {
        // Amid the work, from a book that was sound as far as it had been read; the reason names it.
        return report(ExitCode::BadData, lineOfStore(exception.reason()), true);
    } catch (const platform::Exception& exception) {
        return report(ExitCode::BadData, document::forMessage(exception.reason(), LongestUsageText));
    } catch (const std::bad_alloc&) {
        return report(ExitCode::BadData, "the book needs more memory than there is; give it in parts");
    }
}

} // namespace estatebook
