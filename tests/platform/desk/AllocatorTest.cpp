// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/Allocator.h"

#include <QByteArray>

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <latch>
#include <malloc.h>
#include <memory>
#include <thread>
#include <vector>

namespace zofra::test {
namespace {

// Sanitizers bring allocators of their own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

/// The number of heaps that the C library's allocator has made so far.
qsizetype heaps() {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const file = ::open_memstream(&text, &size);
    EXPECT_EQ(::malloc_info(0, file), 0);
    std::fclose(file);
    const qsizetype count = QByteArray(text, qsizetype(size)).count("<heap nr=");
    std::free(text);
    return count;
}

TEST(AllocatorTest, ThreadsShareTheHeapThatIsThere) {
    tuneAllocator();
    const qsizetype before = heaps();
    ASSERT_GE(before, 1);
    constexpr int together = 8;
    std::latch everybody(together);
    std::vector<std::thread> threads;
    threads.reserve(together);
    for (int i = 0; i < together; ++i) {
        threads.emplace_back([&everybody] {
            const auto block = std::make_unique<char[]>(50'000);
            block[0] = 'x';
            everybody.arrive_and_wait();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(heaps(), before);
}

TEST(AllocatorTest, LargeBlocksGoBackToTheSystem) {
    tuneAllocator();
    const std::size_t before = ::mallinfo2().hblks;
    // The first of these would by itself raise the size from which blocks are mapped.
    for (int i = 0; i < 3; ++i) {
        auto* const block = static_cast<volatile char*>(std::malloc(8 << 20));
        ASSERT_NE(block, nullptr);
        block[0] = 'x';
        EXPECT_EQ(::mallinfo2().hblks, before + 1);
        std::free(const_cast<char*>(block));
        EXPECT_EQ(::mallinfo2().hblks, before);
    }
}

#endif

} // namespace
} // namespace zofra::test
