// SPDX-License-Identifier: MIT
// One task on a store, in a process of its own; database.py runs them and makes ratios of the figures.
//
//     bench_database merge RECORDS EDITS     seconds for each edit that a merge applies to so many records
//     bench_database add COUNT               seconds of the first and of the last tenth of so many additions
//     bench_database memory snippet|plain    bytes of the texts, and of the memory that holds them in a store
#include <Snippet.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/database/LTDatabase.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QByteArray>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <malloc.h>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/// A title and a text, and nothing that a store would not need.
class PlainRecord : public _LTSnippet {
public:
    PlainRecord() = default;
    explicit PlainRecord(double identity) { snipID = NSDate::dateWithTimeIntervalSince1970(identity); }

    void setTitle(const QString& title) { _name = title; }
    void setText(std::string text) { m_text = std::move(text); }
    [[nodiscard]] std::optional<NSDictionary> dictionaryRepresentation() const override { return NSDictionary(); }

private:
    std::string m_text;
};

/// A store without a file.
template <class Record>
class Store : public LTDatabase {
public:
    using LTDatabase::_layawayEdits;
    void saveDB() override {}

protected:
    _LTSnippetClass snippetClass() const override { return _LTSnippetClass::of<Record>(); }
};

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

template <class Record>
std::shared_ptr<Store<Record>> openStore(const QTemporaryDir& folder) {
    NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled");
    auto store = LTDatabase::alloc<Store<Record>>();
    store->initWithFile(folder.filePath(QStringLiteral("DB.plist")));
    return store;
}

void merge(const QTemporaryDir& folder, int records, int edits) {
    const auto store = openStore<PlainRecord>(folder);
    std::vector<std::shared_ptr<_LTSnippet>> all;
    for (int index = 0; index < records; ++index) {
        all.push_back(std::make_shared<PlainRecord>(1.0e9 + index * 61.0));
        store->addSnippet(all.back());
    }
    std::mt19937 random(20261121);
    std::vector<double> seconds;
    for (int round = 0; round < 21; ++round) {
        std::shuffle(all.begin(), all.end(), random);
        // What the host does with each, and what a store does with it during a sync.
        for (int index = 0; index < edits; ++index) {
            const std::shared_ptr<_LTSnippet>& edited = all[std::size_t(index)];
            edited->updateModificationDate();
            store->_layawayEdits.push_back(edited);
        }
        const auto start = Clock::now();
        store->syncingHasEnded(NSNotification{});
        seconds.push_back(secondsSince(start));
    }
    std::nth_element(seconds.begin(), seconds.begin() + 10, seconds.end());
    if (store->snippets().count() != std::size_t(records)) {
        std::abort();
    }
    std::printf("%.12f\n", seconds[10] / edits);
}

void add(const QTemporaryDir& folder, int count) {
    const auto store = openStore<PlainRecord>(folder);
    std::vector<std::shared_ptr<_LTSnippet>> all;
    all.reserve(std::size_t(count));
    for (int index = 0; index < count; ++index) {
        all.push_back(std::make_shared<PlainRecord>(1.0e9 + index));
    }
    double tenths[10] = {};
    for (int tenth = 0; tenth < 10; ++tenth) {
        const auto start = Clock::now();
        for (int index = tenth * (count / 10); index < (tenth + 1) * (count / 10); ++index) {
            store->addSnippet(all[std::size_t(index)]);
        }
        tenths[tenth] = secondsSince(start);
    }
    std::printf("%.9f %.9f\n", tenths[0], tenths[9]);
}

long residentBytes() {
    std::ifstream statistics("/proc/self/statm");
    long pages = 0;
    statistics >> pages >> pages;
    return pages * ::sysconf(_SC_PAGESIZE);
}

template <class Record>
void memory(const QTemporaryDir& folder) {
    constexpr int records = 100000;
    constexpr int textLength = 400;
    const auto store = openStore<Record>(folder);
    ::malloc_trim(0);
    const long before = residentBytes();
    long text = 0;
    for (int index = 0; index < records; ++index) {
        const auto record = std::make_shared<Record>();
        record->setSnippetID(NSDate::dateWithTimeIntervalSince1970(1.0e9 + index * 61.0));
        record->updateModificationDate();
        const QString title = QStringLiteral("Snippet %1").arg(index);
        record->setTitle(title);
        const std::string body(textLength, char('a' + index % 26));
        if constexpr (std::is_same_v<Record, Snippet>) {
            record->setText(QString::fromStdString(body));
        } else {
            record->setText(body);
        }
        text += textLength + title.size();
        store->addSnippet(record);
    }
    ::malloc_trim(0);
    std::printf("%ld %ld\n", text, residentBytes() - before);
}

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir folder;
    qputenv("HOME", folder.path().toUtf8());
    const std::string_view task = argc > 1 ? argv[1] : "";
    if (task == "merge" && argc == 4) {
        merge(folder, std::atoi(argv[2]), std::atoi(argv[3]));
    } else if (task == "add" && argc == 3) {
        add(folder, std::atoi(argv[2]));
    } else if (task == "memory" && argc == 3) {
        std::string_view(argv[2]) == "plain" ? memory<PlainRecord>(folder) : memory<Snippet>(folder);
    } else {
        std::fprintf(stderr, "see the first lines of the source\n");
        return 2;
    }
    return 0;
}
