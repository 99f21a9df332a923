// SPDX-License-Identifier: MIT
//
// A temporary folder that goes with its object.

#ifndef VORN_BENCH_FOLDER_H
#define VORN_BENCH_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace bench
{

class Folder
{
public:
    Folder() : m_strPath((std::filesystem::temp_directory_path() / "vornjsondb-bench-XXXXXX").string())
    {
        if (mkdtemp(m_strPath.data()) == nullptr)
            throw std::runtime_error("cannot make a temporary folder");
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_strPath, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& path() const { return m_strPath; }

private:
    std::string m_strPath;
};

}  // namespace bench

#endif  // VORN_BENCH_FOLDER_H
