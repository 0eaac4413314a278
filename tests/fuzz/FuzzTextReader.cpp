// SPDX-License-Identifier: MIT
// The old-style text reader on arbitrary bytes: it must refuse them with words, or give a value that survives the
// writers.
#include "RoundTrip.h"

#include <VXKit/platform/foundation/PropertyListEncoding.h>
#include <VXKit/platform/foundation/PropertyListTextReader.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    std::optional<NSPropertyList> value;
    try {
        PropertyListEncoding encoding(bytes);
        value = PropertyListTextReader(encoding.textOfPlain()).read();
    } catch (const PropertyListSyntaxError& error) {
        if (error.description.isEmpty()) {
            std::abort();
        }
        return 0;
    }
    checkRoundTrip(*value);
    return 0;
}
