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

std::string cppCall(const Step& step)
{
    const std::string line = "    first = " + cppJson(step.first) + ";\n    second = " + cppJson(step.second) +
                             ";\n    text = " + cppText(step.text) + ";\n    name = " + cppText(step.name) + ";\n";
    const std::string flag = step.flag ? "true" : "false";
    switch (step.call)
    {
        case Call::ColumnList:
            return line + "    api.SqlExpandMemberName(text, " + (step.flag ? "&first" : "nullptr") + ");\n";
        case Call::ValueList:
            return line + "    api.SqlExpandMemberSymbol(text, first);\n";
        case Call::Match:
            return line + "    api.SqlMakeByMatchField(name, first, text);\n";
        case Call::ListCondition:
            return line + "    api.SqlMakeByListField(name.c_str(), first, text);\n";
        case Call::MemberList:
            return line + "    api.SqlExpandMemberList(first, text, " + std::to_string(step.number) + ");\n";
        case Call::SortAndPage:
            return line + "    api.SqlFilterConditionFromJson(first, text);\n";
        case Call::CheckTypes:
            return line + "    api.checkJsonType(first);\n";
        case Call::FillDefaults:
            return line + "    api.fillDefaultValue(first, false);\n";
        case Call::Create:
            return line + "    api.recCreate(first, second);\n";
        case Call::Save:
            return line + "    api.recSave(first, " + flag + ");\n";
        case Call::List:
            return line + "    api.recList(first, second);\n";
        case Call::GetOne:
            return line + "    api.recGetOne(first, second);\n";
        case Call::UpdateByFilter:
            return line + "    api.recUpdateByFilter(first, second);\n";
        case Call::UpdateByWhere:
            return line + "    api.recUpdateByWhere(first, text);\n";
        case Call::Delete:
            return line + "    api.recDelete(first, " + flag + ");\n";
        case Call::DeleteAll:
            return "    api.recDeleteAll();\n";
        case Call::DeleteByName:
            return line + "    api.recDeleteByName(text, name.c_str());\n";
        case Call::DeleteByArray:
            break;
    }
    std::string texts;
    for (const std::string& text : step.texts)
    {
        texts += (texts.empty() ? "" : ", ") + cppText(text);
    }
    return line + "    texts = {" + texts + "};\n    api.recDeleteByArray(texts, name.c_str());\n";
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
