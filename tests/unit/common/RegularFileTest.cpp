#include "common/RegularFile.h"

#include <cerrno>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "LibraryTest.h"
#include "common/Descriptor.h"

namespace common {

namespace {

using RegularFile = LibraryTest;

TEST_F(RegularFile, IsReadWholeOrNotAtAll) {
    const struct {
        std::deque<ssize_t> reads; // the most that each call gives; negative: errno
        int result;
    } rows[] = {
        {{10}, 0},        {{3, 1, 6}, 0},      {{-EINTR, 4, -EINTR, -EINTR, 6}, 0},
        {{4, -EIO}, EIO}, {{-EISDIR}, EISDIR}, {{4, 0}, ENODATA}, // the file gets shorter
    };
    const TemporaryFile file("0123456789");
    const std::size_t files = entriesIn("/proc/self/fd");
    for (const auto& row : rows) {
        platform().reads = row.reads;
        std::string content;
        ASSERT_EQ(readRegularFile(file.path(), 10, content), row.result);
        EXPECT_TRUE(platform().reads.empty());
        EXPECT_TRUE(row.result != 0 || content == "0123456789");
        EXPECT_EQ(entriesIn("/proc/self/fd"), files);
    }
}

TEST_F(RegularFile, NothingElseIsReadNorLeftOpen) {
    const TemporaryFile file("0123456789");
    const std::string fifo = file.path() + ".fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::size_t files = entriesIn("/proc/self/fd");
    std::string content;
    EXPECT_EQ(readRegularFile(fifo, 10, content), EINVAL);
    EXPECT_EQ(readRegularFile("/tmp", 10, content), EISDIR);
    EXPECT_EQ(readRegularFile("/dev/zero", 10, content), EINVAL);
    EXPECT_EQ(readRegularFile(file.path() + ".absent", 10, content), ENOENT);
    EXPECT_EQ(readRegularFile(file.path(), 9, content), EFBIG);
    EXPECT_EQ(entriesIn("/proc/self/fd"), files);
}

TEST(Descriptor, IsNeverThatOfAStandardStream) {
    const int kept = ::dup(STDIN_FILENO);
    ::close(STDIN_FILENO);
    EXPECT_GT(Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)).number(), STDERR_FILENO);
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1); // it stays closed
    ::dup2(kept, STDIN_FILENO);
    ::close(kept);
}

TEST_F(RegularFile, AFileThatAnotherHoldsALeaseOnIsWaitedFor) {
    const TemporaryFile file("text");
    const auto before = std::signal(SIGIO, SIG_IGN); // which tells the holder of who opens the file
    const int leased = ::open(file.path().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::fcntl(leased, F_SETLEASE, F_WRLCK), 0);
    std::thread holder([leased] {
        while (::fcntl(leased, F_GETLEASE) == F_WRLCK) {
            std::this_thread::yield();
        }
        ::fcntl(leased, F_SETLEASE, F_UNLCK);
    });
    std::string content;
    EXPECT_EQ(readRegularFile(file.path(), 10, content), 0);
    EXPECT_EQ(content, "text");
    holder.join();
    ::close(leased);
    std::signal(SIGIO, before);
}

} // namespace
} // namespace common
