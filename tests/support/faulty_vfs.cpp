// SPDX-License-Identifier: MIT
//
// The VFS that fails on demand. Each function asks first and hands over to the default VFS if nothing shall fail.

#include "faulty_vfs.h"

#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace faults
{
namespace
{

FaultyVfs* g_vfs = nullptr;

// An open file; the default VFS's own follows directly behind it.
struct alignas(8) File
{
    sqlite3_file head;
};

sqlite3_file* real(sqlite3_file* pFile)
{
    return reinterpret_cast<sqlite3_file*>(reinterpret_cast<File*>(pFile) + 1);
}

sqlite3_vfs* real(sqlite3_vfs* pVfs)
{
    return static_cast<sqlite3_vfs*>(pVfs->pAppData);
}

int closeFile(sqlite3_file* pFile)
{
    return real(pFile)->pMethods->xClose(real(pFile));
}

int readFile(sqlite3_file* pFile, void* pTo, int size, sqlite3_int64 offset)
{
    const int status = g_vfs->ask(Request::Read);
    return status != SQLITE_OK ? status : real(pFile)->pMethods->xRead(real(pFile), pTo, size, offset);
}

// The second half is written only after nothing has failed in between, so a killed process leaves the first.
int writeFile(sqlite3_file* pFile, const void* pFrom, int size, sqlite3_int64 offset)
{
    const auto* const pBytes = static_cast<const char*>(pFrom);
    const int half = size / 2;
    int status = half > 0 ? real(pFile)->pMethods->xWrite(real(pFile), pBytes, half, offset) : SQLITE_OK;
    if (status == SQLITE_OK)
        status = g_vfs->ask(Request::Write);
    if (status == SQLITE_OK)
        status = real(pFile)->pMethods->xWrite(real(pFile), pBytes + half, size - half, offset + half);
    return status;
}

int truncateFile(sqlite3_file* pFile, sqlite3_int64 size)
{
    const int status = g_vfs->ask(Request::Truncate);
    return status != SQLITE_OK ? status : real(pFile)->pMethods->xTruncate(real(pFile), size);
}

int syncFile(sqlite3_file*, int)
{
    return g_vfs->ask(Request::Sync);
}

int fileSize(sqlite3_file* pFile, sqlite3_int64* pSize)
{
    return real(pFile)->pMethods->xFileSize(real(pFile), pSize);
}

int lockFile(sqlite3_file* pFile, int level)
{
    const int status = g_vfs->ask(Request::Lock);
    return status != SQLITE_OK ? status : real(pFile)->pMethods->xLock(real(pFile), level);
}

int unlockFile(sqlite3_file* pFile, int level)
{
    return real(pFile)->pMethods->xUnlock(real(pFile), level);
}

int checkReservedLock(sqlite3_file* pFile, int* pResult)
{
    return real(pFile)->pMethods->xCheckReservedLock(real(pFile), pResult);
}

int fileControl(sqlite3_file* pFile, int operation, void* pArgument)
{
    return real(pFile)->pMethods->xFileControl(real(pFile), operation, pArgument);
}

int sectorSize(sqlite3_file* pFile)
{
    return real(pFile)->pMethods->xSectorSize(real(pFile));
}

// None of the promises of the real device, so that SQLite takes no short cuts.
int deviceCharacteristics(sqlite3_file*)
{
    return 0;
}

int mapShared(sqlite3_file* pFile, int region, int size, int extend, void volatile** ppMapped)
{
    const int status = g_vfs->ask(Request::SharedMemory);
    return status != SQLITE_OK ? status : real(pFile)->pMethods->xShmMap(real(pFile), region, size, extend, ppMapped);
}

int lockShared(sqlite3_file* pFile, int offset, int count, int flags)
{
    if ((flags & SQLITE_SHM_LOCK) != 0)
    {
        const int status = g_vfs->ask(Request::SharedLock);
        if (status != SQLITE_OK)
            return status;
    }
    return real(pFile)->pMethods->xShmLock(real(pFile), offset, count, flags);
}

void sharedBarrier(sqlite3_file* pFile)
{
    real(pFile)->pMethods->xShmBarrier(real(pFile));
}

int unmapShared(sqlite3_file* pFile, int deleteToo)
{
    return real(pFile)->pMethods->xShmUnmap(real(pFile), deleteToo);
}

// Without the two functions for memory-mapped files: they would go past the read and write above.
const sqlite3_io_methods fileMethods = {2,
                                        closeFile,
                                        readFile,
                                        writeFile,
                                        truncateFile,
                                        syncFile,
                                        fileSize,
                                        lockFile,
                                        unlockFile,
                                        checkReservedLock,
                                        fileControl,
                                        sectorSize,
                                        deviceCharacteristics,
                                        mapShared,
                                        lockShared,
                                        sharedBarrier,
                                        unmapShared,
                                        nullptr,
                                        nullptr};

int openFile(sqlite3_vfs* pVfs, const char* szName, sqlite3_file* pFile, int flags, int* pFlagsOut)
{
    pFile->pMethods = nullptr;
    int status = g_vfs->ask(Request::Open);
    if (status == SQLITE_OK)
        status = real(pVfs)->xOpen(real(pVfs), szName, real(pFile), flags, pFlagsOut);
    if (status == SQLITE_OK)
        pFile->pMethods = &fileMethods;
    return status;
}

int deleteFile(sqlite3_vfs* pVfs, const char* szName, int syncFolder)
{
    const int status = g_vfs->ask(Request::Delete);
    return status != SQLITE_OK ? status : real(pVfs)->xDelete(real(pVfs), szName, syncFolder);
}

int accessFile(sqlite3_vfs* pVfs, const char* szName, int flags, int* pResult)
{
    return real(pVfs)->xAccess(real(pVfs), szName, flags, pResult);
}

int fullPathname(sqlite3_vfs* pVfs, const char* szName, int size, char* szOut)
{
    return real(pVfs)->xFullPathname(real(pVfs), szName, size, szOut);
}

int randomness(sqlite3_vfs* pVfs, int size, char* pOut)
{
    return real(pVfs)->xRandomness(real(pVfs), size, pOut);
}

int sleepFor(sqlite3_vfs* pVfs, int microseconds)
{
    return real(pVfs)->xSleep(real(pVfs), microseconds);
}

int currentTime(sqlite3_vfs* pVfs, double* pOut)
{
    return real(pVfs)->xCurrentTime(real(pVfs), pOut);
}

int lastError(sqlite3_vfs* pVfs, int size, char* szOut)
{
    return real(pVfs)->xGetLastError(real(pVfs), size, szOut);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, Request request)
{
    static const char* const names[] = {"open",   "read", "write",         "truncate",    "sync",
                                        "delete", "lock", "shared memory", "shared lock", "any"};
    return out << names[static_cast<int>(request)];
}

FaultyVfs::FaultyVfs() : m_vfs(), m_pReal(sqlite3_vfs_find(nullptr))
{
    m_vfs.iVersion = 1;
    m_vfs.szOsFile = static_cast<int>(sizeof(File)) + m_pReal->szOsFile;
    m_vfs.mxPathname = m_pReal->mxPathname;
    m_vfs.zName = "faulty";
    m_vfs.pAppData = m_pReal;
    m_vfs.xOpen = openFile;
    m_vfs.xDelete = deleteFile;
    m_vfs.xAccess = accessFile;
    m_vfs.xFullPathname = fullPathname;
    m_vfs.xRandomness = randomness;
    m_vfs.xSleep = sleepFor;
    m_vfs.xCurrentTime = currentTime;
    m_vfs.xGetLastError = lastError;
    g_vfs = this;
    if (sqlite3_vfs_register(&m_vfs, 1) != SQLITE_OK)
        throw std::runtime_error("cannot register a VFS");
}

FaultyVfs::~FaultyVfs()
{
    sqlite3_vfs_register(m_pReal, 1);
    sqlite3_vfs_unregister(&m_vfs);
    g_vfs = nullptr;
}

void FaultyVfs::fail(Request request, int status, long nth, bool stays)
{
    m_request = request;
    m_status = status;
    m_left = nth;
    m_stays = stays;
    m_kills = false;
    m_struck = false;
}

void FaultyVfs::kill(Request request, long nth)
{
    fail(request, SQLITE_ERROR, nth, false);
    m_kills = true;
}

void FaultyVfs::heal()
{
    m_left = 0;
}

int FaultyVfs::ask(Request request)
{
    const bool meant = request == m_request || (m_request == Request::Any && request != Request::Read);
    if (m_left == 0 || !meant)
        return SQLITE_OK;
    if (m_left > 1)
    {
        --m_left;
        return SQLITE_OK;
    }
    if (m_kills)
        ::kill(getpid(), SIGKILL);
    if (!m_stays)
        m_left = 0;
    m_struck = true;
    return m_status;
}

}  // namespace faults
