// SPDX-License-Identifier: MIT
//
// Hand-written code for tables of any shape: statements prepared per call, values bound, columns read by type.

#include "contestant.h"
#include "json_columns.h"
#include "statements.h"

namespace bench
{

namespace
{

class HandWrittenWide : public Contestant
{
public:
    HandWrittenWide(const std::string& strPath, const Shape& shape) : m_db(strPath), m_columns(shape.columns)
    {
        runSql(m_db, shape.strCreate);
        m_strSelect = "SELECT ";
        std::string strMarks;
        for (const Shape::Column& column : m_columns)
        {
            m_strSelect += column.strName + ',';
            strMarks += "?,";
        }
        m_strSelect.back() = ' ';
        strMarks.back() = ')';
        m_strSelect += "FROM " + shape.strTable;
        m_strInsert = "INSERT INTO " + shape.strTable + " VALUES (" + strMarks;
    }

    sqlite3* connection() override { return m_db; }

    std::size_t create(std::size_t i) override
    {
        clear();
        const Json::Value& jRec = input().records[i];
        {
            const Statement statement = prepare(m_db, m_strInsert);
            for (std::size_t column = 0; column < m_columns.size(); ++column)
                bindValue(statement.get(), static_cast<int>(column) + 1, jRec[m_columns[column].strName], m_json);
            m_db.check(sqlite3_step(statement.get()), SQLITE_DONE);
        }
        const Statement statement = prepare(m_db, m_strSelect + " WHERE rowid = ?");
        sqlite3_bind_int64(statement.get(), 1, sqlite3_last_insert_rowid(m_db));
        m_db.check(sqlite3_step(statement.get()), SQLITE_ROW);
        readRow(statement.get(), m_jResult);
        return 1;
    }

    std::size_t list() override
    {
        const Statement statement = prepare(m_db, m_strSelect);
        return readAll([&] { return sqlite3_step(statement.get()) == SQLITE_ROW; },
                       [&](Json::Value& jRec) { readRow(statement.get(), jRec); });
    }

private:
    void readRow(sqlite3_stmt* pStatement, Json::Value& jRec)
    {
        int i = 0;
        for (const Shape::Column& column : m_columns)
        {
            Json::Value& jValue = jRec[column.strName];
            switch (column.strType[0])
            {
                case 's':
                    jValue = columnText(pStatement, i);
                    break;
                case 'i':
                    jValue = sqlite3_column_int(pStatement, i);
                    break;
                case 'l':
                    jValue = static_cast<Json::Int64>(sqlite3_column_int64(pStatement, i));
                    break;
                case 'b':
                    jValue = sqlite3_column_int(pStatement, i) != 0;
                    break;
                default:
                {
                    const char* szText = columnText(pStatement, i);
                    m_json.read(szText, static_cast<std::size_t>(sqlite3_column_bytes(pStatement, i)), jValue);
                    break;
                }
            }
            ++i;
        }
    }

    Connection m_db;
    JsonColumns m_json;
    std::vector<Shape::Column> m_columns;
    std::string m_strSelect;
    std::string m_strInsert;
};

}  // namespace

std::unique_ptr<Contestant> openHandWrittenWide(const std::string& strPath, const Shape& shape)
{
    return std::make_unique<HandWrittenWide>(strPath, shape);
}

}  // namespace bench
