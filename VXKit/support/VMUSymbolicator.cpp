// SPDX-License-Identifier: MIT
#include <VXKit/support/VMUSymbolicator.h>

#include <VXKit/platform/foundation/Demangling.h>
#include <VXKit/support/_VXModules.h>

#include <QFile>

#include <cstdlib>
#include <dwarf.h>
#include <map>
#include <mutex>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace {

/// The function's name in a table of symbols, or null.
const char* nameInTable(Dwfl_Module* module, std::uint64_t address) {
    GElf_Off offset = 0;
    GElf_Sym symbol{};
    const char* name = dwfl_module_addrinfo(module, address, &offset, &symbol, nullptr, nullptr, nullptr);
    const bool isWithin = name && offset < symbol.st_size;
    return isWithin && *name != '\0' ? name : nullptr;
}

/// The function's name in the debugging information, or null.
const char* nameInDebugInformation(Dwfl_Module* module, std::uint64_t address) {
    Dwarf_Addr bias = 0;
    Dwarf_Die* unit = dwfl_module_addrdie(module, address, &bias);
    Dwarf_Die* found = nullptr;
    const int count = unit ? dwarf_getscopes(unit, address - bias, &found) : 0;
    const std::unique_ptr<Dwarf_Die, decltype(&std::free)> scopes(count > 0 ? found : nullptr, &std::free);
    for (int number = 0; number < count; ++number) {
        Dwarf_Die* scope = scopes.get() + number;
        if (dwarf_tag(scope) != DW_TAG_subprogram) {
            continue;
        }
        Dwarf_Attribute attribute;
        if (dwarf_attr_integrate(scope, DW_AT_linkage_name, &attribute)) {
            return dwarf_formstring(&attribute);
        }
        return dwarf_diename(scope);
    }
    return nullptr;
}

/// Names of C, too, would pass for mangled ones: the letter i is that of a type.
QString nameInSource(const char* symbol) {
    const bool isMangled = std::string_view(symbol).starts_with("_Z");
    return isMangled ? QString::fromStdString(demangled(symbol)) : QString::fromUtf8(symbol);
}

} // namespace

class VMUSymbolicator::Session {
public:
    Session(std::vector<VMUModule> modules, int pid) : m_session(std::move(modules), pid) {}

    [[nodiscard]] const std::vector<VMUModule>& modules() const { return m_session.modules(); }

    [[nodiscard]] std::optional<VMUSymbol> symbolAt(std::uint64_t address) {
        const std::lock_guard lock(m_mutex);
        // Deep stacks are recursions: few addresses, each many times.
        const auto known = m_symbols.find(address);
        return known != m_symbols.end() ? known->second : m_symbols.emplace(address, find(address)).first->second;
    }

private:
    [[nodiscard]] std::optional<VMUSymbol> find(std::uint64_t address) const {
        const VMUModule* module = m_session.moduleOfAddress(address);
        Dwfl_Module* opened = module && m_session.dwfl() ? dwfl_addrmodule(m_session.dwfl(), address) : nullptr;
        if (!opened) {
            return std::nullopt;
        }
        const char* name = nameInTable(opened, address);
        if (!name) {
            name = nameInDebugInformation(opened, address);
        }
        if (!name) {
            return std::nullopt;
        }
        return VMUSymbol(nameInSource(name), QFile::decodeName(module->path), address - module->start);
    }

    std::mutex m_mutex; // guards what follows
    VXModuleSession m_session;
    std::map<std::uint64_t, std::optional<VMUSymbol>> m_symbols;
};

VMUSymbolicator::VMUSymbolicator(std::shared_ptr<Session> session) : m_session(std::move(session)) {}

VMUSymbolicator VMUSymbolicator::symbolicatorForPid(int pid) {
    return VMUSymbolicator(std::make_shared<Session>(VXModulesOfProcess(pid), pid));
}

VMUSymbolicator VMUSymbolicator::symbolicatorForModules(const std::vector<VMUModule>& modules) {
    return VMUSymbolicator(std::make_shared<Session>(modules, 0));
}

std::optional<VMUSymbol> VMUSymbolicator::symbolForAddress(std::uint64_t address, VMUAddressKind kind) const {
    const bool followsCall = kind == VMUAddressKind::ReturnAddress && address != 0;
    std::optional<VMUSymbol> symbol = m_session->symbolAt(followsCall ? address - 1 : address);
    if (symbol && followsCall) {
        symbol = VMUSymbol(symbol->name(), symbol->modulePath(), symbol->moduleOffset() + 1);
    }
    return symbol;
}

const std::vector<VMUModule>& VMUSymbolicator::modules() const {
    return m_session->modules();
}
