#ifndef IMGTUNE_TESTS_PLATFORM_STDERR_WRITES_H
#define IMGTUNE_TESTS_PLATFORM_STDERR_WRITES_H

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

/// What `action` writes to standard error, one string per system call. A few hundred lines at most:
/// they wait in the kernel until the action is done.
template <class Action>
std::vector<std::string> stderr_writes(Action action) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const int original = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    action();
    dup2(original, STDERR_FILENO);
    close(original);
    close(ends[1]);

    std::vector<std::string> writes;
    char text[4096];
    for (ssize_t length = 0; (length = read(ends[0], text, sizeof(text))) > 0;) {
        writes.emplace_back(text, static_cast<std::size_t>(length));
    }
    close(ends[0]);
    return writes;
}

#endif
