// SPDX-License-Identifier: MIT
//
// Every command, away from terminals: what it writes and how it ends.

#include "program.h"

namespace
{

using cli_test::Cli;
using cli_test::expectAll;
using cli_test::sh;

constexpr int kNothing = 1;
constexpr int kUsage = 2;
constexpr int kFailure = 3;

const char* const kAnn = "{\"age\":3,\"city\":\"Bern\",\"id\":1,\"name\":\"Ann\"}\n";
const char* const kBob =
    "{\"about\":{\"a\":1},\"age\":7,\"city\":\"Basel\",\"id\":2,\"name\":\"Bob\",\"tags\":[\"x\"]}\n";

class Commands : public Cli
{
protected:
    void SetUp() override
    {
        Cli::SetUp();
        expectAll({{"vornjsondb create id=1 name=Ann age=3", 0, kAnn, ""},
                   {"vornjsondb create id=2 name=Bob '{\"age\":7}' city=Basel 'tags=[\"x\"]' 'about={\"a\":1}'", 0,
                    kBob, ""}});
    }
};

TEST_F(Commands, RecordsAreFoundByShortFiltersAndByJson)
{
    const std::string strBoth = std::string(kAnn) + kBob;
    expectAll({{"vornjsondb list", 0, strBoth, ""},
               {"vornjsondb list name=Ann", 0, kAnn, ""},
               {"vornjsondb list name=Ann age.gt=3", kNothing, "", ""},
               {"vornjsondb list age.gte=3 age.lt=7", 0, kAnn, ""},
               {"vornjsondb list name.ne=Ann", 0, kBob, ""},
               {"vornjsondb list tags.exists=false", 0, kAnn, ""},
               {"vornjsondb list tags.all=x tags.size=1", 0, kBob, ""},
               {"vornjsondb list id.in=2,3", 0, kBob, ""},
               {"vornjsondb list name.beginsWith=A", 0, kAnn, ""},
               {"vornjsondb list name.like=%nn name.glob='A*'", 0, kAnn, ""},
               {"vornjsondb list about.a=1", 0, kBob, ""},
               {"vornjsondb list about=null", 0, kAnn, ""},
               {"vornjsondb list '{\"age\":{\"$gt\":3}}'", 0, kBob, ""},
               {"echo '{\"age\":{\"$gt\":3}}' | vornjsondb list -", 0, kBob, ""},
               {"vornjsondb get age.gt=1 --sort -id", 0, kBob, ""},
               {"vornjsondb get id=9", kNothing, "", ""},
               {"vornjsondb count", 0, "2\n", ""},
               {"vornjsondb count id=9", kNothing, "0\n", ""}});
}

TEST_F(Commands, ListsAreSortedPagedAndCutToFields)
{
    expectAll({{"vornjsondb list --sort -age --fields id", 0, "{\"id\":2}\n{\"id\":1}\n", ""},
               {"vornjsondb list --sort city,-id --limit 1 --fields id,city", 0, "{\"city\":\"Basel\",\"id\":2}\n", ""},
               {"vornjsondb list --sort id --offset 1 --fields id", 0, "{\"id\":2}\n", ""},
               {"vornjsondb list --limit 0", kNothing, "", ""},
               {"vornjsondb list --format json --fields id --sort id", 0, "[\n{\"id\":1},\n{\"id\":2}\n]\n", ""},
               {"vornjsondb list id=9 --format json", kNothing, "[]\n", ""},
               {"vornjsondb list --format csv --fields name,age --sort id", 0,
                "\"name\",\"age\"\r\n\"Ann\",3\r\n\"Bob\",7\r\n", ""},
               {"vornjsondb list --format table --fields id,name --sort id", 0, "id name\n 1 Ann\n 2 Bob\n", ""}});
}

TEST_F(Commands, RecordsAreChangedAndDeletedAndCounted)
{
    expectAll({{"vornjsondb set id=1 --to age=4 'about=[1]'", 0, "1\n", ""},
               {"vornjsondb get id=1 --fields age,about", 0, "{\"about\":[1],\"age\":4}\n", ""},
               {"vornjsondb set id=9 --to age=4", kNothing, "0\n", ""},
               {"vornjsondb set id.gt=0 --to '{\"city\":null}' --dry-run", 0, "2\n", ""},
               {"vornjsondb count city.exists=false", kNothing, "0\n", ""},
               {"vornjsondb set --all --to '{\"city\":null}'", 0, "2\n", ""},
               {"vornjsondb count city.exists=false", 0, "2\n", ""},
               {"vornjsondb delete id.gt=0 --dry-run", 0, "2\n", ""},
               {"vornjsondb delete id=2", 0, "1\n", ""},
               {"vornjsondb delete id=2", kNothing, "0\n", ""},
               {"vornjsondb delete --all --yes", 0, "1\n", ""},
               {"vornjsondb count", kNothing, "0\n", ""}});
}

TEST_F(Commands, MistakesAreToldInOneLine)
{
    expectAll(
        {{"vornjsondb", kUsage, "", "vornjsondb: BadRequest: name a command"},
         {"vornjsondb frob", kUsage, "", "name a command"},
         {"vornjsondb list --format xml", kUsage, "", "xml not in"},
         {"vornjsondb list --frob", kUsage, "", "--frob"},
         {"vornjsondb list --limit -1", kUsage, "", "--limit"},
         {"vornjsondb create", kUsage, "", "record is required"},
         {"vornjsondb list Ann", kUsage, "", "'Ann' is no filter"},
         {"vornjsondb list '{\"age\":'", kUsage, "", "the filter is no JSON"},
         {"echo '[]' | vornjsondb list -", kUsage, "", "the filter is no JSON object"},
         {"vornjsondb list nmae=Ann", kUsage, "", "UnknownMember: The definition has no member \"nmae\""},
         {"vornjsondb list --fields nmae --format csv", kUsage, "", "UnknownMember"},
         {"vornjsondb list age=old", kUsage, "", "BadType: "},
         {"vornjsondb create id=99999999999", kUsage, "", "OutOfRange: "},
         {"vornjsondb create id=1", kFailure, "", "Duplicate: "},
         {"vornjsondb set id=1 --to", kUsage, "", "--to"},
         {"vornjsondb set --to age=3", kUsage, "", "say --all"},
         {"vornjsondb delete", kUsage, "", "say --all"},
         {"vornjsondb delete '{}'", kUsage, "", "allowed with --all"},
         {"vornjsondb --table other list", kFailure, "", "BadDefinition: "},
         {"vornjsondb --def none list", kFailure, "", "Missing: the file none cannot be read"},
         {"vornjsondb --db none list", kFailure, "", "Missing: the database none cannot be opened"},
         {"env -u VORNJSONDB_DB vornjsondb list", kUsage, "", "--db or VORNJSONDB_DB"},
         {"env -u VORNJSONDB_DEF vornjsondb list", kUsage, "", "--def or VORNJSONDB_DEF"},
         {"vornjsondb list \"$(printf 'a\\n\\033b')\"", kUsage, "", "'a\xEF\xBF\xBD\xEF\xBF\xBD\x62' is no filter"},
         {"vornjsondb --json-errors list nmae=Ann", kUsage, "",
          "{\"code\":\"UnknownMember\",\"index\":-1,\"member\":\"nmae\",\"sqlite\":0,\"text\":\""},
         {"vornjsondb list --frob --json-errors", kUsage, "", "{\"code\":\"BadRequest\""}});
    expectAll({{"vornjsondb count", 0, "2\n", ""}, {"test ! -e none", 0, "", ""}});
}

TEST_F(Commands, HelpNamesEveryCommand)
{
    const std::string strHelp = sh("vornjsondb --help").out;
    for (const char* szCommand :
         {"list", "get", "count", "create", "set", "delete", "import", "export", "check", "upgrade", "explain", "init"})
    {
        EXPECT_NE(strHelp.find(std::string("\n  ") + szCommand + ' '), std::string::npos) << szCommand;
        EXPECT_EQ(sh(std::string("vornjsondb ") + szCommand + " --help").status, 0) << szCommand;
    }
    EXPECT_EQ(sh("vornjsondb --version").out.substr(0, 11), "vornjsondb ");
}

TEST_F(Commands, AFilterIsExplained)
{
    const cli_test::Result result = sh("vornjsondb explain age.gt=3 --sort name");
    EXPECT_EQ(result.status, 0);
    for (const char* szPart : {"SELECT ", "\"age\" > ?", "\n  ? 3\n", "people:age:index"})
        EXPECT_NE(result.out.find(szPart), std::string::npos) << result.out;
}

TEST_F(Commands, ATableIsCheckedAndUpgraded)
{
    cli_test::writeFile("more.json", R"({"people": {"member": {"id": {"cpptype": "int", "key": true},
        "name": {"cpptype": "string", "index": true}, "mail": {"cpptype": "string", "cppDefaultValue": "none"}}}})");
    const char* const szMissing = "Missing: The table has no column for \"mail\"; vornjsondb upgrade adds it.";
    expectAll({{"vornjsondb --def more.json list", kFailure, "", szMissing},
               {"vornjsondb --def more.json upgrade --dry-run | grep -A1 missing", 0, "\t\"missing\" : \n\t[\n", ""},
               {"vornjsondb --def more.json upgrade", 0, "", ""},
               {"vornjsondb --def more.json list --sort id --limit 1", 0,
                "{\"id\":1,\"mail\":\"none\",\"name\":\"Ann\"}\n", ""},
               {"vornjsondb check --cells >/dev/null", 0, "", ""}});
    EXPECT_EQ(sh("vornjsondb --def more.json check >/dev/null").status, 0);
    EXPECT_NE(sh("vornjsondb --def more.json check").out.find("\"undeclared\" : \n\t[\n\t\t\"about\""),
              std::string::npos);
}

TEST_F(Commands, ReadingMakesNothing)
{
    cli_test::writeFile("other.json", R"({"other": {"member": {"id": {"cpptype": "int"}}}})");
    const char* const szMissing = "Missing: The table \"other\" does not exist; vornjsondb upgrade makes it.";
    for (const char* szCommand : {"list", "get", "count", "export", "explain"})
        expectAll({{std::string("vornjsondb --def other.json ") + szCommand, kFailure, "", szMissing},
                   {"vornjsondb init --table other", kFailure, "", "the database has no table other"}});
    expectAll({{"vornjsondb --def other.json check >/dev/null", kFailure, "", "Missing: "}});
}

TEST_F(Commands, SeveralTablesNeedAName)
{
    cli_test::writeFile("two.json",
                        R"({"a": {"member": {"x": {"cpptype": "int"}}}, "b": {"member": {"y": {"cpptype": "int"}}}})");
    expectAll({{"vornjsondb --def two.json list", kUsage, "", "several tables: name one with --table"},
               {"vornjsondb --def two.json --table b create y=1", 0, "{\"y\":1}\n", ""},
               {"vornjsondb list --def two.json --table b", 0, "{\"y\":1}\n", ""}});
}

}  // namespace
