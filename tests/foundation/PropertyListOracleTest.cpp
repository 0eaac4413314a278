// SPDX-License-Identifier: MIT
// Other readers and writers of property lists as a second opinion.
#include "PropertyListTestSupport.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#ifdef VXKIT_HAVE_LIBPLIST
#include <cstdlib>
#include <plist/plist.h>
#endif

namespace {

constexpr int valueCount = 400;

class PropertyListOracle : public testing::Test {
protected:
    void runPython(QStringList arguments) const {
        arguments.prepend(QStringLiteral(VXKIT_SOURCE_ROOT "/tests/foundation/plistlib_oracle.py"));
        arguments.append(m_folder.path());
        QProcess python;
        python.setProcessChannelMode(QProcess::ForwardedChannels);
        python.start(QStringLiteral("python3"), arguments);
        ASSERT_TRUE(python.waitForFinished(-1)) << python.errorString().toStdString();
        ASSERT_EQ(python.exitCode(), 0);
    }

    [[nodiscard]] std::string content(int number, const char* suffix) const {
        QFile file(path(number, suffix));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        return file.readAll().toStdString();
    }

    void write(int number, const char* suffix, const std::string& bytes) const {
        QFile file(path(number, suffix));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes.data(), static_cast<qint64>(bytes.size())), static_cast<qint64>(bytes.size()));
    }

private:
    [[nodiscard]] QString path(int number, const char* suffix) const {
        return m_folder.filePath(QString::number(number) + QString::fromLatin1(suffix));
    }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(PropertyListOracle, ReadsWhatPlistlibWritesAndWritesTheSameBytes) {
    runPython({QStringLiteral("make"), QStringLiteral("7"), QString::number(valueCount)});
    for (int number = 0; number < valueCount; ++number) {
        const std::string xml = content(number, ".xml");
        const NSPropertyList value = readPropertyList(xml);
        ASSERT_EQ(xmlOf(value), xml) << number;
        ASSERT_EQ(readPropertyList(content(number, ".bin")), value) << number;
    }
}

TEST_F(PropertyListOracle, PlistlibReadsWhatIsWrittenAndWritesTheSameBytes) {
    for (int number = 0; number < valueCount; ++number) {
        write(number, ".plist", xmlOf(RandomValues(static_cast<unsigned>(number)).value()));
    }
    runPython({QStringLiteral("rewrite")});
    for (int number = 0; number < valueCount; ++number) {
        const NSPropertyList value = RandomValues(static_cast<unsigned>(number)).value();
        ASSERT_EQ(content(number, ".xml"), xmlOf(value)) << number;
        ASSERT_EQ(readPropertyList(content(number, ".bin")), value) << number;
    }
}

#ifdef VXKIT_HAVE_LIBPLIST
TEST(PropertyListLibplist, ReadsWhatIsWrittenAndIsReadInBothForms) {
    for (unsigned seed = 0; seed < valueCount; ++seed) {
        const NSPropertyList value = RandomValues(seed).value();
        const std::string xml = xmlOf(value);
        plist_t node = nullptr;
        plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &node);
        ASSERT_TRUE(node) << seed;
        char* bytes = nullptr;
        std::uint32_t length = 0;
        plist_to_bin(node, &bytes, &length);
        EXPECT_EQ(readPropertyList({bytes, length}), value) << seed;
        std::free(bytes);
        plist_free(node);
    }
}
#endif
