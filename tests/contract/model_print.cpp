// SPDX-License-Identifier: MIT
//
// A random case as the lines of a test.

#include <cstdio>

#include "model.h"
#include "model_case.h"

namespace model
{

namespace
{

std::string cppText(const std::string& text)
{
    std::string out = "std::string(\"";
    for (const char c : text)
    {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\' || code < 0x20 || code > 0x7e)
        {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\%03o", static_cast<unsigned>(code));
            out += escape;
        }
        else
        {
            out += c;
        }
    }
    return out + "\", " + std::to_string(text.size()) + ")";
}

std::string cppJson(const Json::Value& value)
{
    return "json(R\"json(" + jsonText(value) + ")json\")";
}

std::string setFirst(const Step& step)
{
    return "    first = " + cppJson(step.first) + ";\n";
}
std::string setSecond(const Step& step)
{
    return "    second = " + cppJson(step.second) + ";\n";
}
std::string setText(const Step& step)
{
    return "    text = " + cppText(step.text) + ";\n";
}
std::string setName(const Step& step)
{
    return "    name = " + cppText(step.name) + ";\n";
}

std::string setTexts(const Step& step)
{
    std::string texts;
    for (const std::string& text : step.texts)
    {
        texts += (texts.empty() ? "" : ", ") + cppText(text);
    }
    return "    texts = {" + texts + "};\n";
}

std::string cppCall(const Step& step)
{
    const std::string flag = step.flag ? "true" : "false";
    switch (step.call)
    {
        case Call::ColumnList:
            return setFirst(step) + setText(step) + "    api.SqlExpandMemberName(text, " +
                   (step.flag ? "&first" : "nullptr") + ");\n";
        case Call::ValueList:
            return setFirst(step) + setText(step) + "    api.SqlExpandMemberSymbol(text, first);\n";
        case Call::Match:
            return setName(step) + setFirst(step) + setText(step) + "    api.SqlMakeByMatchField(name, first, text);\n";
        case Call::ListCondition:
            return setName(step) + setFirst(step) + setText(step) +
                   "    api.SqlMakeByListField(name.c_str(), first, text);\n";
        case Call::MemberList:
            return setFirst(step) + setText(step) + "    api.SqlExpandMemberList(first, text, " +
                   std::to_string(step.number) + ");\n";
        case Call::SortAndPage:
            return setFirst(step) + setText(step) + "    api.SqlFilterConditionFromJson(first, text);\n";
        case Call::CheckTypes:
            return setFirst(step) + "    api.checkJsonType(first);\n";
        case Call::FillDefaults:
            return setFirst(step) + "    api.fillDefaultValue(first, false);\n";
        case Call::Query:
            return setText(step) + "    second = Json::Value();\n" +
                   "    api.runSqlEx(text, VornJsonDbApi::DbCallBackFillList, &second);\n";
        case Call::Create:
            return setFirst(step) + "    api.recCreate(first, second);\n";
        case Call::Save:
            return setFirst(step) + "    api.recSave(first, " + flag + ");\n";
        case Call::List:
            return setFirst(step) + setSecond(step) + "    api.recList(first, second);\n";
        case Call::GetOne:
            return setFirst(step) + setSecond(step) + "    api.recGetOne(first, second);\n";
        case Call::UpdateByFilter:
            return setFirst(step) + setSecond(step) + "    api.recUpdateByFilter(first, second);\n";
        case Call::UpdateByWhere:
            return setFirst(step) + setText(step) + "    api.recUpdateByWhere(first, text);\n";
        case Call::Delete:
            return setFirst(step) + "    api.recDelete(first, " + flag + ");\n";
        case Call::DeleteAll:
            return "    api.recDeleteAll();\n";
        case Call::DeleteByArray:
            return setTexts(step) + setName(step) + "    api.recDeleteByArray(texts, name.c_str());\n";
        case Call::DeleteByName:
            return setText(step) + setName(step) + "    api.recDeleteByName(text, name.c_str());\n";
    }
    return {};
}

}  // namespace

std::string asTest(const Case& example, std::size_t lastStep)
{
    std::string out = "    Database database;\n    std::string table = \"" + example.table +
                      "\";\n    Json::Value definition = " + cppJson(example.definition) +
                      ";\n    std::string createStatement = " + cppText(example.createStatement) +
                      ";\n    VornJsonDbApi api(database.handle(), table, definition, createStatement);\n"
                      "    Json::Value first, second;\n    std::string text, name;\n"
                      "    std::vector<std::string> texts;\n";
    for (std::size_t i = 0; i <= lastStep && i < example.steps.size(); i++)
    {
        out += cppCall(example.steps[i]);
    }
    return out;
}

}  // namespace model
