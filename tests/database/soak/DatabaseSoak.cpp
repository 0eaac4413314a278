// SPDX-License-Identifier: MIT
// A store under random operations for as long as wanted, in processes that are killed:
//
//     vxkit_database_soak [--seconds N] [--seed S] [--slack MIB]
//
// In the first half of the time a child adds, edits, removes, makes anew, begins and ends syncs and saves, until it is
// killed at a random moment; after every kill the file must hold what the last completed save held, or what the save
// that was going on would have, record by record and in order, and no version may have been set aside, since nobody
// else writes. In the second half one child lives on, and its memory must not grow by more than the removals keep that
// are never forgotten. The operations follow from the seed, the moments of the kills do not.
#include "../TestRecords.h"

#include <VXKit/platform/foundation/NSPropertyListSerialization.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <malloc.h>
#include <poll.h>
#include <random>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t usualRecords = 300;
constexpr int longestLife = 60; // milliseconds from a child's first word to its death

/// What a removal that is kept for ever may cost: the record, its name and its place in the list.
constexpr long bytesOfARemoval = 300;
/// What else may come to it, unless told otherwise: a sanitizer, say, keeps what was given back.
constexpr std::uint64_t usualSlack = 2; // MiB

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "soak: %s\n", what);
    std::exit(1);
}

/// What a list or file holds, in short.
struct Digest {
    std::uint64_t count = 0;
    std::uint64_t hash = 14695981039346656037U; // FNV-1a

    void add(const NSDictionary& record) {
        ++count;
        const std::string bytes = NSPropertyListSerialization::dataWithPropertyList(record, nullptr).value_or("");
        for (const char byte : bytes) {
            hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
        }
    }
    friend bool operator==(const Digest&, const Digest&) = default;
};

/// What a child says: it goes through a pipe in one piece.
struct Message {
    enum Kind : std::uint64_t { Saves, HasSaved, IsWell, IsIll };
    Kind kind;
    Digest digest;
};

class SoakNote : public Note {
public:
    using Note::Note;
    void rename(const QString& name) { _name = name; }
};

class SoakDatabase : public NotesDatabase {
protected:
    _LTSnippetClass snippetClass() const override { return _LTSnippetClass::of<SoakNote>(); }
};

/// The operations of one child.
class Worker {
public:
    Worker(const QString& path, std::uint64_t seed, int pipe) : m_random(seed), m_pipe(pipe) {
        NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled");
        m_store = LTDatabase::alloc<SoakDatabase>();
        m_store->initWithFile(path);
    }

    void step(std::uint32_t savesInAThousand) {
        LTSnippetArray& list = m_store->snippets();
        const std::uint32_t dice = pick(1000);
        if (dice < savesInAThousand) {
            save();
        } else if (dice < 40) {
            m_application.syncManager.syncing = true;
        } else if (dice < 80 && m_application.syncManager.syncing) {
            m_application.syncManager.syncing = false;
            NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, nullptr);
        } else if (list.isEmpty() || dice < 400) {
            m_store->addSnippet(std::make_shared<SoakNote>(freeIdentity(), name()));
        } else if (dice < 430 && !m_removedIdentities.empty()) {
            m_store->addSnippet(
                std::make_shared<SoakNote>(m_removedIdentities[pick(m_removedIdentities.size())], name()));
        } else if (dice < 650) {
            const LTSnippetArray::Snippet edited = list[pick(list.count())];
            static_cast<SoakNote&>(*edited).rename(name());
            edited->updateModificationDate();
            m_store->notifyOfModificationForSnippet(edited);
        } else if (dice < 660) {
            m_store->notifyOfModificationForSnippet(
                std::make_shared<SoakNote>(list[pick(list.count())]->snippetID()->timeIntervalSince1970(), name()));
        } else if (list.count() > usualRecords || dice < 700) {
            remove(list[pick(list.count())]);
        }
    }

    [[nodiscard]] std::size_t keptRemovals() const { return m_store->_layawayRemovals.size(); }

    void save() {
        Digest digest;
        for (const auto& snippet : m_store->snippets()) {
            digest.add(*snippet->dictionaryRepresentation());
        }
        m_store->_dirty = true;
        tell(Message::Saves, digest);
        m_store->saveDB();
        tell(Message::HasSaved, digest);
    }

    void tell(Message::Kind kind, const Digest& digest) const {
        const Message message{kind, digest};
        if (::write(m_pipe, &message, sizeof message) != ssize_t{sizeof message}) {
            ::_exit(1);
        }
    }

private:
    std::uint32_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::uint32_t>(0, std::uint32_t(count - 1))(m_random);
    }
    QString name() { return QStringLiteral("snippet %1").arg(m_random()); }
    double freeIdentity() { return m_store->_freeTimeAtOrBefore(1.0e9 + pick(100000)); }

    void remove(const LTSnippetArray::Snippet& snippet) {
        // So many as to meet them again, but no list without an end of our own.
        constexpr std::size_t remembered = 200;
        const double identity = snippet->snippetID()->timeIntervalSince1970();
        if (m_removedIdentities.size() < remembered) {
            m_removedIdentities.push_back(identity);
        } else {
            m_removedIdentities[pick(remembered)] = identity;
        }
        m_store->removeSnippet(snippet);
    }

    TestApplication m_application;
    std::shared_ptr<SoakDatabase> m_store;
    std::mt19937_64 m_random;
    std::vector<double> m_removedIdentities;
    int m_pipe;
};

struct Child {
    pid_t process;
    int pipe;
};

/// A process that does `work(pipe)` and writes into the pipe what it has to say.
template <class Work>
Child start(Work work) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        fail("no pipe");
    }
    const pid_t process = ::fork();
    if (process < 0) {
        fail("no process");
    }
    if (process == 0) {
        ::close(ends[0]);
        work(ends[1]);
        ::_exit(0);
    }
    ::close(ends[1]);
    return {process, ends[0]};
}

std::optional<Message> nextMessage(const Child& child) {
    Message message{};
    const ssize_t size = ::read(child.pipe, &message, sizeof message);
    if (size != 0 && size != ssize_t{sizeof message}) {
        fail("half a message");
    }
    return size == 0 ? std::nullopt : std::optional(message);
}

Digest digestOfFile(const QString& path) {
    Digest digest;
    const std::optional<NSDictionary> file = NSDictionary::dictionaryWithContentsOfFile(path);
    const NSArray* contents = file ? file->objectOfType<NSArray>("contents") : nullptr;
    if (!contents) {
        fail("the file cannot be read");
    }
    for (const NSPropertyList& record : *contents) {
        digest.add(*record.as<NSDictionary>());
    }
    return digest;
}

/// Fails when there is anything beside the file but what the kill left, which it removes.
void checkFolder(const QString& folder) {
    for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::Hidden)) {
        if (name.startsWith(QLatin1String(".vxkit-"))) {
            QFile::remove(folder + QLatin1Char('/') + name);
        } else if (name != QLatin1String("DB.plist")) {
            std::fprintf(stderr, "%s\n", qPrintable(name));
            fail("a version was set aside although nobody else writes");
        }
    }
}

void soakWithKills(const QString& folder, std::uint64_t seed, Clock::time_point end) {
    const QString path = folder + QStringLiteral("/DB.plist");
    std::mt19937_64 random(seed);
    std::vector<Digest> possible; // in the file: what was saved, and what was being saved at the last kill
    std::size_t kills = 0;
    std::size_t saves = 0;
    while (Clock::now() < end) {
        const std::uint64_t childSeed = random();
        const Child child = start([&](int pipe) {
            Worker worker(path, childSeed, pipe);
            for (;;) {
                worker.step(15);
            }
        });
        // Also before its first word, that is while it loads.
        const auto death = Clock::now() + std::chrono::microseconds(random() % (longestLife * 1000));
        const auto listen = [&] {
            const std::optional<Message> message = nextMessage(child);
            if (!message) {
                return false;
            }
            if (message->kind == Message::HasSaved) {
                possible = {message->digest};
                ++saves;
            } else {
                possible.push_back(message->digest);
            }
            return true;
        };
        for (;;) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(death - Clock::now()).count();
            pollfd waiting{child.pipe, POLLIN, 0};
            if (left <= 0 || ::poll(&waiting, 1, int(left)) == 0) {
                break;
            }
            if (!listen()) {
                fail("the child ended by itself");
            }
        }
        ::kill(child.process, SIGKILL);
        int status = 0;
        ::waitpid(child.process, &status, 0);
        while (listen()) {
        }
        ::close(child.pipe);
        if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGKILL) {
            fail("the child ended by itself");
        }
        ++kills;
        checkFolder(folder);
        if (saves == 0 && !QFile::exists(path)) {
            possible.clear();
            continue;
        }
        const Digest found = digestOfFile(path);
        if (std::find(possible.begin(), possible.end(), found) == possible.end()) {
            std::fprintf(stderr, "after kill %zu: %llu records\n", kills, static_cast<unsigned long long>(found.count));
            fail("the file does not hold what was saved");
        }
        possible = {found};
    }
    std::printf("soak: %zu kills, %zu completed saves\n", kills, saves);
    if (kills == 0 || saves == 0) {
        fail("nothing happened");
    }
}

long residentBytes() {
    ::malloc_trim(0);
    std::ifstream statistics("/proc/self/statm");
    long pages = 0;
    statistics >> pages >> pages;
    return pages * ::sysconf(_SC_PAGESIZE);
}

void soakWithoutEnd(const QString& folder, std::uint64_t seed, Clock::time_point end, std::uint64_t slack) {
    const QString path = folder + QStringLiteral("/DB.plist");
    const Child child = start([&](int pipe) {
        Worker worker(path, seed, pipe);
        // The first fifth fills caches and lists, and counts for nothing.
        const auto warm = Clock::now() + (end - Clock::now()) / 5;
        long steps = 0;
        const auto workUntil = [&](Clock::time_point time) {
            for (; Clock::now() < time; ++steps) {
                worker.step(1);
            }
        };
        workUntil(warm);
        const long memory = residentBytes();
        const auto removals = static_cast<long>(worker.keptRemovals());
        workUntil(end);
        const long grown = residentBytes() - memory;
        const long kept = static_cast<long>(worker.keptRemovals()) - removals;
        std::printf("soak: %ld operations; memory grew by %ld KiB, %ld removals are kept\n", steps, grown / 1024, kept);
        std::fflush(stdout);
        worker.save();
        const long allowed = kept * bytesOfARemoval + static_cast<long>(slack) * 1024 * 1024;
        worker.tell(grown <= allowed ? Message::IsWell : Message::IsIll, Digest());
    });
    Digest saved;
    Message last{Message::Saves, Digest()};
    while (const std::optional<Message> message = nextMessage(child)) {
        last = *message;
        if (last.kind == Message::HasSaved) {
            saved = last.digest;
        }
    }
    int status = 0;
    ::waitpid(child.process, &status, 0);
    ::close(child.pipe);
    if (last.kind == Message::Saves || last.kind == Message::HasSaved || status != 0) {
        fail("the child ended by itself");
    }
    if (last.kind == Message::IsIll) {
        fail("memory grows");
    }
    if (digestOfFile(path) != saved) {
        fail("the file does not hold what was saved");
    }
    checkFolder(folder);
}

std::uint64_t numberOf(const char* text) {
    char* end = nullptr;
    const std::uint64_t number = std::strtoull(text, &end, 10);
    if (*text == '\0' || *end != '\0') {
        fail("a number was expected");
    }
    return number;
}

} // namespace

int main(int argc, char** argv) {
    std::uint64_t seconds = 10;
    std::uint64_t seed = std::random_device()();
    std::uint64_t slack = usualSlack;
    for (int index = 1; index < argc; index += 2) {
        const std::string_view option = argv[index];
        std::uint64_t* value = option == "--seconds" ? &seconds
                               : option == "--seed"  ? &seed
                               : option == "--slack" ? &slack
                                                     : nullptr;
        if (!value || index + 1 == argc) {
            fail("usage: vxkit_database_soak [--seconds N] [--seed S] [--slack MIB]");
        }
        *value = numberOf(argv[index + 1]);
    }
    std::printf("soak: --seed %llu\n", static_cast<unsigned long long>(seed));
    std::fflush(stdout);

    const QTemporaryDir home;
    const QTemporaryDir folder;
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/config")).toUtf8());
    qputenv("XDG_RUNTIME_DIR", home.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");

    const auto begin = Clock::now();
    soakWithKills(folder.path(), seed, begin + std::chrono::seconds(seconds) / 2);
    std::fflush(stdout);
    soakWithoutEnd(folder.path(), seed + 1, begin + std::chrono::seconds(seconds), slack);
    return 0;
}
