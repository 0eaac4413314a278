// SPDX-License-Identifier: MIT
#include <VXKit/support/VMUSymbolicator.h>

#include <VXKit/platform/foundation/NSThread.h>

#include "ChildProgram.h"
#include "CrashingLibrary.h"

#include <QFile>
#include <QTemporaryDir>

#include <atomic>
#include <ctime>
#include <optional>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace {

using Addresses = std::vector<std::uintptr_t>;

[[gnu::noinline]] int askedStatically(void* addresses) {
    *static_cast<Addresses*>(addresses) = NSThread::callStackReturnAddresses();
    return 1;
}

[[gnu::noinline, noreturn]] void throwAddresses() {
    throw NSThread::callStackReturnAddresses();
}

/// Its last instruction is a call.
[[gnu::noinline, noreturn]] void neverComesBack() {
    throwAddresses();
}

std::uint64_t addressOf(int (*function)(void*)) {
    return reinterpret_cast<std::uintptr_t>(function);
}

QStringList namesOf(const VMUSymbolicator& symbolicator, const Addresses& addresses) {
    QStringList names;
    for (const std::uintptr_t address : addresses) {
        const auto symbol = symbolicator.symbolForAddress(address);
        names.append(symbol ? symbol->name() : QString());
    }
    return names;
}

VMUSymbolicator ofThisProcess() {
    return VMUSymbolicator::symbolicatorForPid(::getpid());
}

/// The module of `modules` that this function of a library is in.
VMUModule moduleOf(const std::vector<VMUModule>& modules, std::uint64_t address) {
    for (const VMUModule& module : modules) {
        if (module.start <= address && address < module.end) {
            return module;
        }
    }
    ADD_FAILURE() << "no module";
    return {};
}

std::optional<QString> nameIn(const VMUModule& module, std::uint64_t address) {
    const auto symbol =
        VMUSymbolicator::symbolicatorForModules({module}).symbolForAddress(address, VMUAddressKind::Instruction);
    return symbol ? std::optional(symbol->name()) : std::nullopt;
}

} // namespace

TEST(VMUSymbolicator, NamesAStackThroughAProgramAndALibrary) {
    Addresses addresses;
    crashingLibraryCalls(&askedStatically, &addresses);
    const QStringList names = namesOf(ofThisProcess(), addresses);
    ASSERT_GE(names.size(), 4);
    EXPECT_EQ(names[0], QStringLiteral("(anonymous namespace)::askedStatically(void*)"));
    EXPECT_EQ(names[1], QStringLiteral("(anonymous namespace)::hiddenInLibrary(int (*)(void*), void*)"));
    EXPECT_EQ(names[2], QStringLiteral("crashingLibraryCalls"));
    EXPECT_TRUE(names[3].contains(u"NamesAStackThroughAProgramAndALibrary")) << names[3].toStdString();
    EXPECT_TRUE(names.contains(QStringLiteral("main")));
}

TEST(VMUSymbolicator, NamesTheCallerWhoseLastInstructionIsACall) {
    Addresses addresses;
    try {
        neverComesBack();
    } catch (const Addresses& thrown) {
        addresses = thrown;
    }
    const QStringList names = namesOf(ofThisProcess(), addresses);
    ASSERT_GE(names.size(), 2);
    EXPECT_EQ(names[0], QStringLiteral("(anonymous namespace)::throwAddresses()"));
    EXPECT_EQ(names[1], QStringLiteral("(anonymous namespace)::neverComesBack()"));
}

TEST(VMUSymbolicator, TakesAFunctionsFirstAddressForItWhereThatIsNoReturnAddress) {
    const std::uint64_t address = addressOf(&crashingLibraryReadsNull);
    const auto symbol = ofThisProcess().symbolForAddress(address, VMUAddressKind::Instruction);
    ASSERT_TRUE(symbol);
    EXPECT_EQ(symbol->name(), QStringLiteral("crashingLibraryReadsNull"));
    const auto before = ofThisProcess().symbolForAddress(address, VMUAddressKind::ReturnAddress);
    EXPECT_TRUE(!before || before->name() != symbol->name());
}

TEST(VMUSymbolicator, TellsWhereInWhichFileTheAddressIs) {
    const VMUSymbolicator symbolicator = ofThisProcess();
    const std::uint64_t address = addressOf(&crashingLibraryReadsNull) + 1;
    const auto symbol = symbolicator.symbolForAddress(address);
    ASSERT_TRUE(symbol);
    EXPECT_TRUE(symbol->modulePath().endsWith(u".so")) << symbol->modulePath().toStdString();
    EXPECT_EQ(symbol->moduleOffset(), address - moduleOf(symbolicator.modules(), address).start);
}

TEST(VMUSymbolicator, KnowsNoFunctionOutsideOfCode) {
    const VMUSymbolicator symbolicator = ofThisProcess();
    int local = 0;
    EXPECT_FALSE(symbolicator.symbolForAddress(0));
    EXPECT_FALSE(symbolicator.symbolForAddress(1));
    EXPECT_FALSE(symbolicator.symbolForAddress(UINT64_MAX));
    EXPECT_FALSE(symbolicator.symbolForAddress(reinterpret_cast<std::uintptr_t>(&local)));
}

TEST(VMUSymbolicator, KnowsNothingOfAProcessThatIsNotThere) {
    const VMUSymbolicator symbolicator = VMUSymbolicator::symbolicatorForPid(-1);
    EXPECT_FALSE(symbolicator.symbolForAddress(addressOf(&crashingLibraryReadsNull) + 1));
    EXPECT_TRUE(symbolicator.modules().empty());
}

TEST(VMUSymbolicator, NamesStaticFunctionsOfAnotherProcessWithAndWithoutDebugInformation) {
    const std::pair<const char*, const char*> programs[] = {
        {CRASHING_PROGRAM, "(anonymous namespace)::staticCrash()"},
        {CRASHING_PROGRAM_PLAIN, "(anonymous namespace)::staticCrash()"},
        {CRASHING_PROGRAM_UNLISTED, "staticCrash"}, // what its debugging information has of a static function
    };
    for (const auto& [program, name] : programs) {
        const ChildProgram child({program, "stay", "/"});
        const std::uint64_t address = std::stoull(child.line(), nullptr, 16);
        const auto symbol =
            VMUSymbolicator::symbolicatorForPid(child.process()).symbolForAddress(address, VMUAddressKind::Instruction);
        ASSERT_TRUE(symbol) << program;
        EXPECT_EQ(symbol->name().toStdString(), name) << program;
        EXPECT_EQ(symbol->modulePath(), QFile::decodeName(program));
    }
}

TEST(VMUSymbolicator, KnowsNoStaticFunctionOfAStrippedProgram) {
    const ChildProgram child({CRASHING_PROGRAM_STRIPPED, "stay", "/"});
    const std::uint64_t address = std::stoull(child.line(), nullptr, 16);
    const VMUSymbolicator symbolicator = VMUSymbolicator::symbolicatorForPid(child.process());
    EXPECT_FALSE(symbolicator.symbolForAddress(address, VMUAddressKind::Instruction));
    EXPECT_FALSE(symbolicator.modules().empty());
}

TEST(VMUSymbolicator, NamesTheFunctionsOfAProgramThatIsDeletedWhileItRuns) {
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QStringLiteral("program"));
    ASSERT_TRUE(QFile::copy(QFile::decodeName(CRASHING_PROGRAM_PLAIN), copy));
    const ChildProgram child({copy.toStdString(), "stay", "/"});
    const std::uint64_t address = std::stoull(child.line(), nullptr, 16);
    ASSERT_TRUE(QFile::remove(copy));
    const auto symbol =
        VMUSymbolicator::symbolicatorForPid(child.process()).symbolForAddress(address, VMUAddressKind::Instruction);
    ASSERT_TRUE(symbol);
    EXPECT_EQ(symbol->name(), QStringLiteral("(anonymous namespace)::staticCrash()"));
}

TEST(VMUSymbolicator, NamesFromTheModulesOfAProcessThatIsGone) {
    const std::uint64_t address = addressOf(&crashingLibraryReadsNull);
    VMUModule module = moduleOf(ofThisProcess().modules(), address);
    ASSERT_FALSE(module.buildId.isEmpty());
    EXPECT_EQ(nameIn(module, address), QStringLiteral("crashingLibraryReadsNull"));

    const std::uint64_t distance = 0x10000000;
    module.start += distance;
    module.end += distance;
    EXPECT_EQ(nameIn(module, address + distance), QStringLiteral("crashingLibraryReadsNull"));
}

TEST(VMUSymbolicator, TakesNoNameFromAnotherFileInTheSamePlace) {
    const std::uint64_t address = addressOf(&crashingLibraryReadsNull);
    const VMUModule module = moduleOf(ofThisProcess().modules(), address);
    VMUModule other = module;
    other.buildId[0] = static_cast<char>(other.buildId[0] ^ 1);
    EXPECT_EQ(nameIn(other, address), std::nullopt);
    other = module;
    other.path = "/nowhere/at/all.so";
    EXPECT_EQ(nameIn(other, address), std::nullopt);
    other.path = "/dev/zero";
    EXPECT_EQ(nameIn(other, address), std::nullopt);
    other.path = "/";
    EXPECT_EQ(nameIn(other, address), std::nullopt);
}

TEST(VMUSymbolicator, GoesByTheTimeOfChangeWhereThereIsNoBuildId) {
    const std::uint64_t address = addressOf(&crashingLibraryReadsNull);
    VMUModule module = moduleOf(ofThisProcess().modules(), address);
    module.buildId.clear();
    module.unchangedSince = std::time(nullptr);
    EXPECT_EQ(nameIn(module, address), QStringLiteral("crashingLibraryReadsNull"));
    module.unchangedSince = 1;
    EXPECT_EQ(nameIn(module, address), std::nullopt);
}

TEST(VMUSymbolicator, AnswersManyThreadsAtOnce) {
    const VMUSymbolicator symbolicator = ofThisProcess();
    const std::uint64_t address = addressOf(&crashingLibraryReadsNull);
    std::atomic<int> named = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            for (std::uint64_t offset = 0; offset < 100; ++offset) {
                static_cast<void>(symbolicator.symbolForAddress(address + 8192 - offset));
            }
            const auto symbol = symbolicator.symbolForAddress(address, VMUAddressKind::Instruction);
            named += symbol && symbol->name() == u"crashingLibraryReadsNull" ? 1 : 0;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(named, 4);
}

TEST(VMUSymbolicator, AsksNobodyOverTheNetwork) {
    const int server = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ASSERT_EQ(::bind(server, reinterpret_cast<sockaddr*>(&address), length), 0);
    ASSERT_EQ(::getsockname(server, reinterpret_cast<sockaddr*>(&address), &length), 0);
    ASSERT_EQ(::listen(server, 8), 0);
    qputenv("DEBUGINFOD_URLS", "http://127.0.0.1:" + QByteArray::number(ntohs(address.sin_port)));
    qputenv("DEBUGINFOD_TIMEOUT", "1");
    const VMUSymbolicator symbolicator = ofThisProcess();
    for (const VMUModule& module : symbolicator.modules()) {
        // Where there is no symbol, everything is looked through.
        static_cast<void>(symbolicator.symbolForAddress(module.end));
        static_cast<void>(symbolicator.symbolForAddress((module.start + module.end) / 2));
    }
    pollfd waiting{server, POLLIN, 0};
    EXPECT_EQ(::poll(&waiting, 1, 0), 0);
    ::close(server);
}
