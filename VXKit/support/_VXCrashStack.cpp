// SPDX-License-Identifier: MIT
#include <VXKit/support/_VXCrashStack.h>

#include <VXKit/support/_VXCrashFormat.h>
#include <VXKit/support/_VXModules.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <elfutils/libdwfl.h>
#include <optional>
#include <sys/types.h>
#include <utility>

namespace {

/// libdwfl wants a process with threads; any numbers do.
constexpr pid_t deadThread = 1;

#if defined(__x86_64__)
constexpr std::size_t registerCount = 17;
constexpr std::size_t stackPointer = 7;
constexpr std::size_t instructionPointer = 16;
#elif defined(__aarch64__)
constexpr std::size_t registerCount = 33;
constexpr std::size_t linkRegister = 30;
constexpr std::size_t instructionPointer = 32;
#else
constexpr std::size_t registerCount = 0;
#endif

using RegisterValues = std::array<Dwarf_Word, std::max<std::size_t>(registerCount, 1)>;

class Unwinding {
public:
    Unwinding(const VXCrashStack& stack, const VXModuleSession& session) : m_stack(stack), m_session(session) {}

    std::vector<VXStackAddress> run() {
        m_frames.push_back({m_stack.instruction, VMUAddressKind::Instruction});
        if (registerCount == 0 || m_stack.registers.size() != registerCount || !m_session.dwfl()) {
            return std::move(m_frames);
        }
        std::copy_n(m_stack.registers.begin(), registerCount, m_registers.begin());
        leaveMissingFunction();
        static const Dwfl_Thread_Callbacks callbacks = {
            .next_thread = [](Dwfl* /*dwfl*/, void* /*self*/, void** thread) -> pid_t {
                return std::exchange(*thread, thread) ? 0 : deadThread;
            },
            .get_thread =
                [](Dwfl* /*dwfl*/, pid_t /*thread*/, void* self, void** thread) {
                    *thread = self;
                    return true;
                },
            .memory_read =
                [](Dwfl* /*dwfl*/, Dwarf_Addr address, Dwarf_Word* result, void* self) {
                    const auto word = static_cast<const Unwinding*>(self)->wordAt(address);
                    *result = word.value_or(0);
                    return word.has_value();
                },
            .set_initial_registers =
                [](Dwfl_Thread* thread, void* self) {
                    return static_cast<const Unwinding*>(self)->setRegisters(thread);
                },
            .detach = nullptr,
            .thread_detach = nullptr,
        };
        if (dwfl_attach_state(m_session.dwfl(), nullptr, deadThread, &callbacks, this)) {
            dwfl_getthread_frames(
                m_session.dwfl(), deadThread,
                [](Dwfl_Frame* frame, void* self) { return static_cast<Unwinding*>(self)->addFrame(frame); }, this);
        }
        return std::move(m_frames);
    }

private:
    [[nodiscard]] std::optional<Dwarf_Word> wordAt(std::uint64_t address) const {
        const std::uint64_t offset = address - m_stack.address;
        if (address < m_stack.address || m_stack.bytes.size() < sizeof(Dwarf_Word) ||
            offset > m_stack.bytes.size() - sizeof(Dwarf_Word)) {
            return std::nullopt;
        }
        Dwarf_Word word;
        std::memcpy(&word, m_stack.bytes.data() + offset, sizeof word);
        return word;
    }

    /// A call of what is no function, such as one through a null pointer, has left nothing but its return address.
    void leaveMissingFunction() {
        if (m_session.moduleOfAddress(m_stack.instruction)) {
            return;
        }
        std::optional<Dwarf_Word> caller;
#if defined(__x86_64__)
        caller = wordAt(m_registers[stackPointer]);
#elif defined(__aarch64__)
        caller = m_registers[linkRegister];
#endif
        if (!caller || *caller == 0 || !m_session.moduleOfAddress(*caller - 1)) {
            return;
        }
        // The first address of all is looked up as it stands, so it must lie in the call.
#if defined(__x86_64__)
        m_registers[stackPointer] += sizeof(Dwarf_Word);
#endif
#if defined(__x86_64__) || defined(__aarch64__)
        m_registers[instructionPointer] = *caller - 1;
#endif
        m_frames.push_back({*caller, VMUAddressKind::ReturnAddress});
    }

    bool setRegisters(Dwfl_Thread* thread) const {
#if defined(__aarch64__)
        dwfl_thread_state_register_pc(thread, m_registers[instructionPointer]);
        return dwfl_thread_state_registers(thread, 0, instructionPointer, m_registers.data());
#else
        return dwfl_thread_state_registers(thread, 0, registerCount, m_registers.data());
#endif
    }

    int addFrame(Dwfl_Frame* frame) {
        Dwarf_Addr address = 0;
        bool isInterrupted = false;
        if (!dwfl_frame_pc(frame, &address, &isInterrupted) || address == 0 ||
            m_frames.size() >= VXCrashLimits::frames) {
            return DWARF_CB_ABORT;
        }
        if (m_isAtFirst) {
            m_isAtFirst = false;
            return DWARF_CB_OK;
        }
        m_frames.push_back({address, isInterrupted ? VMUAddressKind::Instruction : VMUAddressKind::ReturnAddress});
        return DWARF_CB_OK;
    }

    const VXCrashStack& m_stack;
    const VXModuleSession& m_session;
    RegisterValues m_registers = {};
    bool m_isAtFirst = true; // which is in the list already
    std::vector<VXStackAddress> m_frames;
};

} // namespace

std::vector<VXStackAddress> VXUnwindCrashStack(const VXCrashStack& stack, const std::vector<VMUModule>& modules) {
    const VXModuleSession session(modules, 0);
    return Unwinding(stack, session).run();
}
