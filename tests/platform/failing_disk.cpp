#include "platform/failing_disk.h"

#include <sqlite3.h>

#include <new>
#include <utility>

namespace kavio::test {
namespace {

sqlite3_vfs* realDisk = nullptr;
sqlite3_vfs failingDisk;
sqlite3_io_methods failingMethods;
int operationsLeft = 0;  // until the fault; 0: none is set
bool isFaultMet = false;
FailingDisk::Fault currentFault = FailingDisk::Fault::REFUSED_ONCE;

/// Carries `operation` out, or not.
template <class Operation>
int attempt(int failure, const Operation& operation) {
    using enum FailingDisk::Fault;
    const bool isTurn = operationsLeft > 0 && --operationsLeft == 0;
    isFaultMet = isFaultMet || isTurn;
    if (isFaultMet && currentFault == FULL) return SQLITE_FULL;
    if (!isTurn) return operation();
    if (currentFault == DONE_ONCE) operation();
    return failure;
}

/// What SQLite takes for the file: its methods, then the real file behind it.
struct FailingFile {
    sqlite3_file base;
    sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* real(sqlite3_file* file) { return reinterpret_cast<FailingFile*>(file)->real(); }

/// A method that hands its arguments on to the same method of the real file.
template <auto method, class... Arguments>
int handOn(sqlite3_file* file, Arguments... arguments) {
    return (real(file)->pMethods->*method)(real(file), arguments...);
}

template <auto method, int failure, class... Arguments>
int mayFail(sqlite3_file* file, Arguments... arguments) {
    return attempt(failure, [&] { return handOn<method>(file, arguments...); });
}

int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    auto* failing = new (file) FailingFile{};
    const auto open = [&] { return realDisk->xOpen(realDisk, name, failing->real(), flags, outFlags); };
    const int code = (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0 ? attempt(SQLITE_CANTOPEN, open) : open();
    if (code == SQLITE_OK) {
        failing->base.pMethods = &failingMethods;
    } else if (failing->real()->pMethods != nullptr) {
        failing->real()->pMethods->xClose(failing->real());
    }
    return code;
}

int deleteFile(sqlite3_vfs*, const char* name, int syncFolder) {
    return attempt(SQLITE_IOERR_DELETE, [&] { return realDisk->xDelete(realDisk, name, syncFolder); });
}

}  // namespace

FailingDisk::FailingDisk() {
    using Methods = sqlite3_io_methods;
    realDisk = sqlite3_vfs_find(nullptr);
    failingMethods = {.iVersion = 1,
                      .xClose = handOn<&Methods::xClose>,
                      .xRead = handOn<&Methods::xRead>,
                      .xWrite = mayFail<&Methods::xWrite, SQLITE_IOERR_WRITE>,
                      .xTruncate = mayFail<&Methods::xTruncate, SQLITE_IOERR_TRUNCATE>,
                      .xSync = mayFail<&Methods::xSync, SQLITE_IOERR_FSYNC>,
                      .xFileSize = handOn<&Methods::xFileSize>,
                      .xLock = handOn<&Methods::xLock>,
                      .xUnlock = handOn<&Methods::xUnlock>,
                      .xCheckReservedLock = handOn<&Methods::xCheckReservedLock>,
                      .xFileControl = handOn<&Methods::xFileControl>,
                      .xSectorSize = handOn<&Methods::xSectorSize>,
                      .xDeviceCharacteristics = handOn<&Methods::xDeviceCharacteristics>,
                      .xShmMap = nullptr,
                      .xShmLock = nullptr,
                      .xShmBarrier = nullptr,
                      .xShmUnmap = nullptr,
                      .xFetch = nullptr,
                      .xUnfetch = nullptr};
    failingDisk = *realDisk;
    failingDisk.zName = "failing";
    failingDisk.szOsFile += static_cast<int>(sizeof(FailingFile));
    failingDisk.xOpen = openFile;
    failingDisk.xDelete = deleteFile;
    sqlite3_vfs_register(&failingDisk, 1);
}

FailingDisk::~FailingDisk() {
    repair();
    sqlite3_vfs_unregister(&failingDisk);
    sqlite3_vfs_register(realDisk, 1);
}

void FailingDisk::failAt(int n, Fault fault) {
    operationsLeft = n;
    currentFault = fault;
}

bool FailingDisk::repair() {
    operationsLeft = 0;
    return std::exchange(isFaultMet, false);
}

}  // namespace kavio::test
