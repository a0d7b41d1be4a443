// A full disk for the save tests, preloaded into the launcher (LD_PRELOAD): every write to a file of a world folder
// takes its bytes from the budget in the file named by MERIDON_TEST_DISK_FREE (a decimal count, rewritten as it is
// spent), and fails with ENOSPC once the budget is gone, as a full file system does. A test frees space by writing a
// larger number into that file. Without the variable, or while the file is missing, writes go through untouched.

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {

using WriteFunction = ssize_t (*)(int, void const*, size_t);

std::mutex budgetMutex;

/// The budget left, or -1 for no limit. Read and rewritten with pread and pwrite, which are not intercepted.
long long ReadBudget(int fd) {
    char text[32] = {};
    ssize_t count = ::pread(fd, text, sizeof text - 1, 0);
    return count > 0 ? std::atoll(text) : -1;
}

void WriteBudget(int fd, long long budget) {
    char text[32];
    int length = std::snprintf(text, sizeof text, "%lld\n", budget);
    if (::ftruncate(fd, 0) == 0)
        [[maybe_unused]] ssize_t ignored = ::pwrite(fd, text, static_cast<size_t>(length), 0);
}

bool InWorldFolder(int fd) {
    char link[64], path[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    ssize_t length = ::readlink(link, path, sizeof path - 1);
    if (length <= 0)
        return false;
    path[length] = '\0';
    return std::strstr(path, "/Meridon-data/server/worlds/") != nullptr;
}

}

extern "C" __attribute__((visibility("default"))) ssize_t write(int fd, void const* data, size_t size) {
    static auto const real = reinterpret_cast<WriteFunction>(dlsym(RTLD_NEXT, "write"));
    static char const* const budgetPath = std::getenv("MERIDON_TEST_DISK_FREE");
    if (!budgetPath || !InWorldFolder(fd))
        return real(fd, data, size);

    std::lock_guard lock(budgetMutex);
    int budgetFd = ::open(budgetPath, O_RDWR | O_CLOEXEC);
    if (budgetFd < 0)
        return real(fd, data, size);
    long long budget = ReadBudget(budgetFd);
    if (budget >= 0) {
        if (budget == 0) {
            ::close(budgetFd);
            errno = ENOSPC;
            return -1;
        }
        // A write larger than the space left is cut short, as the kernel does on a file system that fills up.
        if (static_cast<long long>(size) > budget)
            size = static_cast<size_t>(budget);
        WriteBudget(budgetFd, budget - static_cast<long long>(size));
    }
    ::close(budgetFd);
    return real(fd, data, size);
}
