// SPDX-License-Identifier: MIT

#include "options.h"

#include <CLI/CLI.hpp>

#include "error.h"

namespace cli
{

namespace
{

void addFilter(CLI::App* pCommand, Options& options)
{
    pCommand->add_option(
        "filter", options.arguments,
        "Which records: member=value, member.gt=value, ..., or a JSON object; - reads it from standard "
        "input. Without one: all");
}

void addFormat(CLI::App* pCommand, Options& options, const std::vector<std::string>& formats)
{
    pCommand
        ->add_option("--format", options.strFormat,
                     "How records are written. Without it: a table on a terminal, JSON lines elsewhere")
        ->check(CLI::IsMember(formats));
}

void addPaging(CLI::App* pCommand, Options& options)
{
    pCommand->add_option("--sort", options.strSort, "Members to sort by, with commas between; -member descends");
    pCommand->add_option("--limit", options.iLimit, "At most so many records")->check(CLI::NonNegativeNumber);
    pCommand->add_option("--offset", options.iOffset, "Pass over so many first")->check(CLI::NonNegativeNumber);
    pCommand->add_option("--fields", options.strFields, "Members to read, with commas between");
}

void addCare(CLI::App* pCommand, Options& options)
{
    pCommand->add_flag("--all", options.blAll, "Allow a filter without any condition");
    pCommand->add_flag("--yes", options.blYes, "Do not ask before more than one record is changed");
    pCommand->add_flag("--dry-run", options.blDryRun, "Only count the records");
}

}  // namespace

int parse(int argc, char** argv, Options& options)
{
    CLI::App app("One table of an SQLite database, worked with as JSON records", "vornjsondb");
    app.set_version_flag("--version", std::string("vornjsondb ") + VORNJSONDB_CLI_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--db", options.strDatabase, "The database file")->envname("VORNJSONDB_DB");
    app.add_option("--def", options.strDefinition, "The file with the table's definition")->envname("VORNJSONDB_DEF");
    app.add_option("--table", options.strTable, "The table, where the definition has several");
    app.add_option("--wait", options.dWaitSeconds, "Seconds to wait for another program's lock")
        ->check(CLI::Range(0.0, 1000000.0))
        ->capture_default_str();
    app.add_flag("--json-errors", options.blJsonErrors, "Write an error as a JSON object");

    const std::vector<std::string> everyFormat{"table", "json", "jsonl", "csv"};
    const auto add = [&](const char* szName, const char* szText)
    {
        CLI::App* const pCommand = app.add_subcommand(szName, szText);
        pCommand->callback([&options, szName] { options.strCommand = szName; });
        return pCommand;
    };

    CLI::App* pCommand = add("list", "Lists the records that match");
    addFilter(pCommand, options);
    addPaging(pCommand, options);
    addFormat(pCommand, options, everyFormat);

    pCommand = add("get", "Writes the first record that matches");
    addFilter(pCommand, options);
    addPaging(pCommand, options);
    addFormat(pCommand, options, everyFormat);

    pCommand = add("count", "Counts the records that match");
    addFilter(pCommand, options);

    pCommand = add("create", "Stores a new record and writes it as it was stored");
    pCommand
        ->add_option("record", options.arguments, "member=value ..., or a JSON object; - reads it from standard input")
        ->required();
    addFormat(pCommand, options, everyFormat);

    pCommand = add("set", "Changes the records that match");
    addFilter(pCommand, options);
    pCommand->add_option("--to", options.values, "What they get: member=value ..., or a JSON object")->required();
    addCare(pCommand, options);

    pCommand = add("delete", "Deletes the records that match");
    addFilter(pCommand, options);
    addCare(pCommand, options);

    pCommand = add("import", "Stores the records of a file: all of them, or none");
    pCommand->add_option("file", options.strFile, "A JSON array, JSON lines or CSV; - is standard input")->required();
    pCommand
        ->add_option("--format", options.strFormat, "What the file holds. Without it: told by its name or beginning")
        ->check(CLI::IsMember({"json", "jsonl", "csv"}));
    pCommand->add_flag("--upsert", options.blUpsert, "Records whose key exists change the stored one");
    pCommand->add_option("--skip-bad", options.strSkipBad,
                         "Store the good records, and write the bad ones to this file");
    pCommand->add_flag("--dry-run", options.blDryRun, "Try everything, then undo it");

    pCommand = add("export", "Writes the records that match, in flat memory");
    addFilter(pCommand, options);
    addPaging(pCommand, options);
    addFormat(pCommand, options, {"json", "jsonl", "csv"});
    pCommand->add_option("--output", options.strOutput, "A file to write instead of standard output");

    pCommand = add("check", "Compares the table with its definition");
    pCommand->add_flag("--cells", options.blCells, "Read every value, too");

    pCommand = add("upgrade", "Adds the columns and indexes that the definition has and the table lacks");
    pCommand->add_flag("--dry-run", options.blDryRun, "Only tell what is missing");

    pCommand = add("explain", "Shows the SQL of a filter and how SQLite will run it");
    addFilter(pCommand, options);
    addPaging(pCommand, options);

    pCommand = add("init", "Writes a definition from an existing table (--db, --table), or from the values of a file");
    pCommand->add_option("file", options.strFile, "A JSON array, JSON lines or CSV; - is standard input");
    pCommand->add_option("--format", options.strFormat, "What the file holds")
        ->check(CLI::IsMember({"json", "jsonl", "csv"}));
    pCommand->add_option("--output", options.strOutput, "A file to write instead of standard output");

    try
    {
        app.parse(argc, argv);
        return -1;
    }
    catch (const CLI::Success& success)  // --help, --version
    {
        return app.exit(success);
    }
    catch (const CLI::ParseError& error)
    {
        for (int i = 1; i < argc; ++i)  // the option itself may stand where it was not understood
            options.blJsonErrors = options.blJsonErrors || std::string(argv[i]) == "--json-errors";
        if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr && app.get_subcommands().empty())
            throw badUsage("name a command; vornjsondb --help lists them");
        throw badUsage(error.what());
    }
}

}  // namespace cli
