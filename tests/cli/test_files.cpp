// SPDX-License-Identifier: MIT
//
// import and export: every format there and back, and files that mean harm.

#include "program.h"

namespace
{

using cli_test::Cli;
using cli_test::expectAll;
using cli_test::sh;
using cli_test::writeFile;

constexpr int kNothing = 1;
constexpr int kFailure = 3;

class Files : public Cli
{
};

const char* const kRecords =
    "{\"about\":null,\"id\":1,\"name\":\"\"}\n"
    "{\"about\":{\"a\":[1,\"\\u00e9\"]},\"active\":true,\"age\":-5,\"id\":2,\"name\":\"a,\\\"b\\\"\\r\\nc \"}\n"
    "{\"city\":null,\"id\":3,\"name\":\"true\",\"score\":0.1,\"tags\":[]}\n";

TEST_F(Files, WhatIsExportedIsImportedAsItWasInEveryFormat)
{
    writeFile("in.jsonl", kRecords);
    expectAll({{"vornjsondb import in.jsonl", 0, "3\n", ""}, {"vornjsondb export --output whole.jsonl", 0, "", ""}});
    for (const char* szFormat : {"json", "jsonl", "csv"})
    {
        const std::string strFile = std::string("out.") + szFormat;
        const std::string strOther = std::string("--db ") + szFormat + ".db ";
        expectAll({{"vornjsondb export --format " + std::string(szFormat) + " --output " + strFile, 0, "", ""},
                   {"vornjsondb " + strOther + "import " + strFile, 0, "3\n", ""},
                   {"vornjsondb " + strOther + "export | cmp - whole.jsonl", 0, "", ""},
                   {"cat " + strFile + " | vornjsondb " + strOther + "import --upsert --format " + szFormat + " -", 0,
                    "3\n", ""},
                   {"vornjsondb " + strOther + "export --format " + szFormat + " | cmp - " + strFile, 0, "", ""},
                   {"ls | grep part", kNothing, "", ""}});
    }
}

TEST_F(Files, AnExportTakesAFilterAndPages)
{
    writeFile("in.jsonl", kRecords);
    expectAll({{"vornjsondb import in.jsonl", 0, "3\n", ""},
               {"vornjsondb export id.gt=1 --sort -id --limit 1 --fields id --format csv", 0, "\"id\"\r\n3\r\n", ""},
               {"vornjsondb export id=9 --format csv --fields id", kNothing, "\"id\"\r\n", ""}});
}

TEST_F(Files, ArraysMayBeTheOneMemberOfAnObjectAndBeginWithAByteOrderMark)
{
    writeFile("wrapped.json", "\xEF\xBB\xBF { \"x]\\\"\" : [ {\"id\":1}\n,{\"id\":2} ] }\n");
    writeFile("marked.csv", "\xEF\xBB\xBFid,name\n3,x\n");
    expectAll({{"vornjsondb import wrapped.json", 0, "2\n", ""},
               {"vornjsondb import marked.csv", 0, "1\n", ""},
               {"echo '[]' | vornjsondb import -", kNothing, "0\n", ""}});
}

TEST_F(Files, TheCellsOfCsvAreReadByTheTypesOfTheirMembers)
{
    writeFile("in.csv",
              "id,name,age,score,active,about,city\r\n1,12,12,1e3,true,x,\r\n2,\"\",-0,0.5,false,\"[1,2]\",\"\"\r\n");
    expectAll({{"vornjsondb import in.csv", 0, "2\n", ""},
               {"vornjsondb list --sort id", 0,
                "{\"about\":\"x\",\"active\":true,\"age\":12,\"id\":1,\"name\":\"12\",\"score\":1000.0}\n"
                "{\"about\":[1,2],\"active\":false,\"age\":0,\"city\":\"\",\"id\":2,\"name\":\"\",\"score\":0.5}\n",
                ""}});
}

TEST_F(Files, AnUpsertChangesTheGivenMembersAlone)
{
    expectAll({{"vornjsondb create id=1 name=Ann age=3 >/dev/null", 0, "", ""},
               {"printf '{\"id\":1,\"age\":4}\\n{\"id\":2}\\n' | vornjsondb import --upsert -", 0, "2\n", ""},
               {"vornjsondb list --sort id", 0,
                "{\"age\":4,\"city\":\"Bern\",\"id\":1,\"name\":\"Ann\"}\n{\"city\":\"Bern\",\"id\":2}\n", ""}});
}

TEST_F(Files, BadRecordsGoWhereTheyAreAskedTo)
{
    writeFile("in.jsonl",
              "{\"id\":1}\n{\"id\":\"x\"}\nnonsense\n\n{\"id\":1}\n[3]\n{\"id\":2,\"nmae\":1}\n\xFF\n{\"id\":3}\n");
    const std::string strBad =
        "{\"code\":\"BadType\",\"member\":\"id\",\"reason\":\"\\\"id\\\" must be a whole number from -2147483648 to "
        "2147483647.\",\"record\":{\"id\":\"x\"}}\n";
    expectAll({{"vornjsondb import in.jsonl", kFailure, "", "record 2: \"id\" must be"},
               {"vornjsondb import in.jsonl --skip-bad bad --dry-run", 0, "2\n", "bad records, in bad: 6"},
               {"vornjsondb count", kFailure, "", "Missing: "},
               {"vornjsondb import in.jsonl --skip-bad bad", 0, "2\n", "bad records, in bad: 6"},
               {"vornjsondb list --fields id --sort id", 0, "{\"id\":1}\n{\"id\":3}\n", ""},
               {"head -n 1 bad", 0, strBad, ""},
               {"grep -c '\"reason\":\"' bad", 0, "6\n", ""},
               {"grep -c Duplicate bad", 0, "1\n", ""},
               {"printf 'id,name\\n7,a,b\\n8,c\\n' | vornjsondb import - --skip-bad bad", 0, "1\n", "in bad: 1"},
               {"cat bad", 0,
                "{\"code\":\"BadType\",\"member\":\"\",\"reason\":\"standard input, record 1 has 3 cells, and 2 are "
                "named\",\"record\":\"7,a,b\"}\n",
                ""},
               {"vornjsondb import in.jsonl --skip-bad none/bad", kFailure, "", "writing none/bad failed"}});
}

TEST_F(Files, WhereATriggerEndsTheTransactionNothingIsStored)
{
    ASSERT_EQ(sh("vornjsondb upgrade").status, 0);
    cli_test::sql("CREATE TRIGGER r BEFORE INSERT ON people WHEN new.id = 2 BEGIN SELECT RAISE(ROLLBACK, 'no'); END");
    writeFile("in.jsonl", "{\"id\":1}\n{\"id\":2}\n{\"id\":3}\n");
    expectAll({{"vornjsondb import in.jsonl --skip-bad bad", kFailure, "", "record 2: "},
               {"vornjsondb count", kNothing, "0\n", ""}});
}

// Each begins with good records: none of them may be stored.
TEST_F(Files, OfAFileWithAFaultNothingIsStored)
{
    struct Hostile
    {
        const char* szName;
        std::string text;
        const char* szError;
    };
    const std::string strGood = "{\"id\":5},{\"id\":6}";
    std::string strMany;
    for (int i = 10; i < 1000; ++i)
        strMany += "{\"id\":" + std::to_string(i) + "}\n";
    const Hostile files[] = {
        {"ended.json", "[" + strGood, "the file ends before the array does"},
        {"cut.json", "[" + strGood + ",{\"id\":", "the file ends before the array does"},
        {"text.json", "[" + strGood + ",{\"name\":\"x]", "the file ends before the array does"},
        {"open.json", "{\"a\":[" + strGood + "]", "the file ends before the object"},
        {"behind.json", "[" + strGood + "] 3", "something stands behind the array"},
        {"comma.json", "[" + strGood + ",]", "is no JSON"},
        {"first.json", "[," + strGood + "]", "is no JSON"},
        {"two.json", "[" + strGood + " {\"id\":7}]", "is no JSON"},
        {"none.json", "3", "neither a JSON array"},
        {"empty.json", "", "neither a JSON array"},
        {"deep.json", "[" + strGood + ",{\"about\":" + std::string(5000, '[') + std::string(5000, ']') + "}]",
         "is no JSON"},
        {"bytes.json", "[" + strGood + ",{\"name\":\"\xC3\x28\"}]", "is not UTF-8"},
        {"surrogate.jsonl", "{\"id\":5}\n{\"name\":\"\xED\xA0\x80\"}\n", "is not UTF-8"},
        {"late.jsonl", strMany + "{\"id\":10}\n", "record 991: A record with this primary key exists already"},
        {"cut.jsonl", "{\"id\":5}\n{\"id\":", "line 2 is no JSON"},
        {"nul.csv", "id,name\n5,a\n6,b" + std::string(1, '\0') + "c\n", "a NUL byte"},
        {"bytes.csv", "id,name\n5,a\n6,\xFF\n", "record 2 is not UTF-8 in the column \"name\""},
        {"quote.csv", "id,name\n5,a\n6,\"b\"c\n", "a quote in the wrong place"},
        {"open.csv", "id,name\n5,a\n6,\"b\n", "a quote in the wrong place, or one that is never closed"},
        {"short.csv", "id,name\n5,a\n6\n", "record 2 has 1 cells, and 2 are named"},
        {"twice.csv", "id,id\n5,5\n", "names the column \"id\" twice"},
        {"column.csv", "id,nmae\n5,a\n", "no member \"nmae\""},
        {"zeros.csv", "id,name\n005,a\n", "\"id\" must be a whole number"},
        {"names.csv", "", "no line of names"},
    };
    ASSERT_EQ(sh("vornjsondb create id=1").status, 0);
    for (const Hostile& file : files)
    {
        writeFile(file.szName, file.text);
        expectAll({{std::string("vornjsondb import ") + file.szName, kFailure, "", file.szError},
                   {"vornjsondb count", 0, "1\n", ""}});
    }
    expectAll({{"vornjsondb import none", kFailure, "", "the file none cannot be read"},
               {"vornjsondb import .", kFailure, "", "the file . cannot be read"}});
}

TEST_F(Files, ALineThatNeverEndsIsAnErrorAndNoMemory)
{
    for (const char* szBegin : {"{\"name\":\"", "[{\"name\":\"", "name\n\""})
    {
        const char* const szFormat = szBegin[0] == '{' ? "jsonl" : szBegin[0] == '[' ? "json" : "csv";
        writeFile("begin", szBegin);
        const std::string strLong = "(cat begin; head -c 100000000 /dev/zero | tr '\\0' x) | ";
        expectAll({{strLong + "vornjsondb import - --format " + szFormat, kFailure, "", "is longer than 64 MiB"}});
    }
}

TEST_F(Files, WhatAFormatCannotSayIsAnError)
{
    expectAll(
        {{"vornjsondb create '{\"id\":1,\"name\":\"a\\u0000b\"}' >/dev/null", 0, "", ""},
         {"vornjsondb export --format csv --output out.csv", kFailure, "", "BadCell: a record holds a text with a NUL"},
         {"test ! -e out.csv && test ! -e out.csv.part", 0, "", ""},
         {"vornjsondb set id=1 --to \"name=$(printf 'a\\377')\"", 0, "1\n", ""},
         {"vornjsondb list", kFailure, "", "BadCell: a record holds a text that is not UTF-8"},
         {"vornjsondb list --format csv --fields name | od -An -c | tr -d ' '", 0, "\"name\"\\r\\n\"a377\"\\r\\n\n",
          ""}});
}

TEST_F(Files, AnExportReplacesAFileOnlyWhenItIsWhole)
{
    writeFile("in.jsonl", kRecords);
    writeFile("out.jsonl", "before\n");
    expectAll({{"vornjsondb import in.jsonl", 0, "3\n", ""},
               {"vornjsondb export nmae=3 --output out.jsonl", 2, "", "UnknownMember"},
               {"cat out.jsonl", 0, "before\n", ""},
               {"ln -s out.jsonl link && vornjsondb export --output link && test -h link", 0, "", ""},
               {"wc -l < out.jsonl | tr -d ' '", 0, "3\n", ""},
               {"ls | grep part", kNothing, "", ""}});
}

}  // namespace
