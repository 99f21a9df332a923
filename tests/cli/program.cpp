// SPDX-License-Identifier: MIT

#include "program.h"

#include <fcntl.h>
#include <pty.h>
#include <sqlite3.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace cli_test
{

namespace
{

constexpr const char* kDefinition = R"({"people": {"member": {
    "id": {"cpptype": "int", "key": true},
    "name": {"cpptype": "string"},
    "age": {"cpptype": "int", "index": true},
    "score": {"cpptype": "double"},
    "active": {"cpptype": "bool"},
    "tags": {"cpptype": "Json::arrayValue"},
    "about": {"cpptype": "Json::Value"},
    "city": {"cpptype": "string", "cppDefaultValue": "Bern"}}}})";

int waitFor(pid_t child)
{
    int iStatus = 0;
    waitpid(child, &iStatus, 0);
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -WTERMSIG(iStatus);
}

[[noreturn]] void runShell(const std::string& line)
{
    execl("/bin/sh", "sh", "-c", line.c_str(), static_cast<char*>(nullptr));
    _exit(127);
}

void redirect(const char* szFile, int flags, int fd)
{
    const int opened = open(szFile, flags, 0600);
    dup2(opened, fd);
    close(opened);
}

}  // namespace

Result sh(const std::string& line)
{
    const pid_t child = fork();
    if (child == 0)
    {
        redirect("/dev/null", O_RDONLY, STDIN_FILENO);
        redirect("bin/out", O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
        redirect("bin/err", O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
        runShell(line);
    }
    const int iStatus = waitFor(child);
    return {iStatus, readFile("bin/out"), readFile("bin/err")};
}

Result terminal(const std::string& line, unsigned short columns, const std::string& typed,
                const std::function<void()>& first)
{
    winsize size{};
    size.ws_row = 24;
    size.ws_col = columns;
    int iMaster = -1;
    const pid_t child = forkpty(&iMaster, nullptr, nullptr, &size);
    if (child == 0)
        runShell(line);
    Result result;
    bool blAnswered = false;
    std::array<char, 4096> buffer{};
    for (ssize_t got = 0; (got = read(iMaster, buffer.data(), buffer.size())) > 0;)
    {
        result.out.append(buffer.data(), static_cast<std::size_t>(got));
        if (blAnswered || result.out.find("[y/N]") == std::string::npos)
            continue;
        blAnswered = true;
        first();
        if (write(iMaster, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size()))
            ADD_FAILURE() << "the terminal takes nothing";
    }
    result.status = waitFor(child);
    close(iMaster);
    return result;
}

void sql(const std::string& text)
{
    sqlite3* pDb = nullptr;
    ASSERT_EQ(sqlite3_open("people.db", &pDb), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(pDb, text.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(pDb);
    sqlite3_close(pDb);
}

void expectAll(const std::vector<Case>& cases)
{
    for (const Case& now : cases)
    {
        SCOPED_TRACE(now.line);
        const Result result = sh(now.line);
        EXPECT_EQ(result.status, now.status);
        EXPECT_EQ(result.out, now.out);
        if (now.err.empty())
            EXPECT_EQ(result.err, "");
        else
            EXPECT_NE(result.err.find(now.err), std::string::npos) << result.err;
        EXPECT_LE(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
}

void writeFile(const std::string& strName, const std::string& text)
{
    std::ofstream(strName, std::ios::binary) << text;
}

std::string readFile(const std::string& strName)
{
    std::ifstream file(strName, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void Cli::SetUp()
{
    std::string strFolder = ::testing::TempDir() + "vornjsondb-cli-XXXXXX";
    ASSERT_NE(mkdtemp(strFolder.data()), nullptr);
    m_strFolder = strFolder;
    ASSERT_EQ(chdir(strFolder.c_str()), 0);
    ASSERT_EQ(mkdir("bin", 0700), 0);
    writeFile("bin/vornjsondb", "#!/bin/sh\nexec " VORNJSONDB_EMULATOR " " VORNJSONDB_PROGRAM " \"$@\"\n");
    ASSERT_EQ(chmod("bin/vornjsondb", 0700), 0);
    writeFile("def.json", kDefinition);
    setenv("PATH", (strFolder + "/bin:" + std::getenv("PATH")).c_str(), 1);
    setenv("VORNJSONDB_DB", "people.db", 1);
    setenv("VORNJSONDB_DEF", "def.json", 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("TERM", "xterm", 1);
    unsetenv("NO_COLOR");
}

void Cli::TearDown()
{
    if (chdir("/") == 0)
        std::filesystem::remove_all(m_strFolder);
}

}  // namespace cli_test
