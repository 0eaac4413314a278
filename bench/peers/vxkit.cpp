// SPDX-License-Identifier: MIT
#include "Measure.h"

#include <VXKit/database/LTDatabase.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <QString>

#include <memory>
#include <optional>
#include <random>
#include <string_view>
#include <vector>

namespace {

class Record : public _LTSnippet {
public:
    Record() = default;
    explicit Record(double identity) { snipID = NSDate::dateWithTimeIntervalSince1970(identity); }
    static std::shared_ptr<_LTSnippet> emptySnippet() { return std::make_shared<Record>(); }
    [[nodiscard]] std::optional<NSDictionary> dictionaryRepresentation() const override { return NSDictionary(); }
};

NSPropertyList load(const std::string& bytes) {
    NSError error;
    std::optional<NSPropertyList> value = NSPropertyListSerialization::propertyListWithData(bytes, nullptr, &error);
    if (!value) {
        refuse(qPrintable(error.localizedDescription));
    }
    return *std::move(value);
}

/// As many records from one start second as a burst of new snippets would be.
void makeUniqueSnippets(int count) {
    const std::shared_ptr<LTDatabase> database = LTDatabase::sharedDB();
    measure([&] {
        for (int made = 0; made < count; ++made) {
            double identity = 0.0;
            const auto record = _LTSnippet::emptySnippetWithUniqueIDStartingDate<Record>(1700000000.0, &identity);
            database->snippets().addObject(record);
        }
    });
}

/// A fixed number of look-ups, half of them hits, in a list of `count` records.
void lookUp(int count) {
    constexpr int lookUps = 1000000;
    static_cast<void>(_LTSnippetClass::of<Record>());
    LTSnippetArray list;
    for (int index = 0; index < count; ++index) {
        list.addObject(std::make_shared<Record>(1.0e9 + index * 61.0));
    }
    std::mt19937 random(1);
    std::uniform_int_distribution<int> any(0, 2 * count - 1);
    std::vector<NSDate> asked;
    asked.reserve(lookUps);
    for (int index = 0; index < lookUps; ++index) {
        asked.push_back(NSDate::dateWithTimeIntervalSince1970(1.0e9 + any(random) * 61.0));
    }
    int hits = 0;
    measure([&] {
        for (const NSDate snippetID : asked) {
            hits += list.containsSnippetID(snippetID) ? 1 : 0;
        }
    });
    if (hits == 0 || hits == lookUps) {
        refuse("the look-ups did not look");
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        refuse("bench_vxkit TASK FILE-OR-COUNT [TARGET]");
    }
    const std::string_view task = argv[1];
    if (task == "free-ids") {
        makeUniqueSnippets(std::atoi(argv[2]));
        return 0;
    }
    if (task == "look-up") {
        lookUp(std::atoi(argv[2]));
        return 0;
    }
    const std::string bytes = readWhole(argv[2]);
    if (task == "load") {
        std::optional<NSPropertyList> value;
        measure([&] { value = load(bytes); });
        return 0;
    }
    const NSPropertyList value = load(bytes);
    if (task == "serialise") {
        measure([&] {
            if (!NSPropertyListSerialization::dataWithPropertyList(value, nullptr)) {
                refuse("cannot serialise");
            }
        });
        return 0;
    }
    if (task == "save" && argc > 3) {
        measure([&] {
            if (!value.as<NSDictionary>()->writeToFile(QString::fromLocal8Bit(argv[3]), true)) {
                refuse("cannot save");
            }
        });
        return 0;
    }
    refuse("unknown task");
}
