// SPDX-License-Identifier: MIT
#include "Measure.h"

#include <plist/plist.h>

#include <cstdint>
#include <string_view>

namespace {

plist_t load(const std::string& bytes) {
    plist_t value = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &value);
    if (!value) {
        refuse("cannot load");
    }
    return value;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        refuse("bench_libplist TASK FILE");
    }
    const std::string_view task = argv[1];
    const std::string bytes = readWhole(argv[2]);
    if (task == "load") {
        measure([&] { load(bytes); });
        return 0;
    }
    if (task == "serialise") {
        plist_t value = load(bytes);
        measure([&] {
            char* text = nullptr;
            std::uint32_t length = 0;
            plist_to_xml(value, &text, &length);
            if (!text) {
                refuse("cannot serialise");
            }
        });
        return 0;
    }
    refuse("unknown task");
}
