// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSThread.h>

#include <cstdint>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Stack {
    std::vector<std::uintptr_t> addresses;
    std::uintptr_t caller = 0; // where the function that asked returns to
};

[[gnu::noinline]] Stack stackHere() {
    Stack stack;
    stack.addresses = NSThread::callStackReturnAddresses();
    stack.caller = reinterpret_cast<std::uintptr_t>(__builtin_return_address(0));
    return stack;
}

[[gnu::noinline]] std::size_t framesAtDepth(int depth) {
    const std::size_t frames = depth == 0 ? stackHere().addresses.size() : framesAtDepth(depth - 1);
    asm volatile(""); // keeps the call above from becoming a jump
    return frames;
}

} // namespace

TEST(NSThread, TellsTheStackInnermostFirstBeginningInTheFunctionThatAsks) {
    const Stack stack = stackHere();
    ASSERT_GE(stack.addresses.size(), 3U);
    const auto function = reinterpret_cast<std::uintptr_t>(&stackHere);
    EXPECT_GT(stack.addresses[0], function);
    EXPECT_LT(stack.addresses[0], function + 1024);
    EXPECT_EQ(stack.addresses[1], stack.caller);
    for (const std::uintptr_t address : stack.addresses) {
        EXPECT_NE(address, 0U);
    }
}

TEST(NSThread, TellsEveryCallOfADeepStack) {
    const std::size_t shallow = framesAtDepth(0);
    EXPECT_EQ(framesAtDepth(10000), shallow + 10000);
}

TEST(NSThread, TellsTheStackOfTheThreadThatAsks) {
    const std::size_t outer = framesAtDepth(0);
    Stack inner;
    std::thread([&inner] { inner = stackHere(); }).join();
    ASSERT_GE(inner.addresses.size(), 3U);
    EXPECT_EQ(inner.addresses[1], inner.caller);
    EXPECT_LT(inner.addresses.size(), outer) << "of a thread, nothing of who started it";
}

TEST(NSThread, KnowsTheMainThread) {
    EXPECT_TRUE(NSThread::isMainThread());
    bool isMain = true;
    std::thread([&isMain] { isMain = NSThread::isMainThread(); }).join();
    EXPECT_FALSE(isMain);
}
