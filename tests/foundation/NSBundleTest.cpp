// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSBundle.h>

#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>

#include <gtest/gtest.h>

namespace {

// Of a bundle in the resources of this program, beside those of a host application.
const QString libraryIdentifier = QStringLiteral("org.vxkit.Test");

} // namespace

TEST(NSBundle, FindsTheBundleThatIsCompiledIn) {
    const NSBundle* bundle = NSBundle::bundleWithIdentifier(libraryIdentifier);
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(bundle->bundleIdentifier(), libraryIdentifier);
    EXPECT_EQ(bundle->resourcePath(), QStringLiteral(":/bundles/org.vxkit.Test"));
}

TEST(NSBundle, IsTheSameObjectForTheSameIdentifier) {
    EXPECT_EQ(NSBundle::bundleWithIdentifier(libraryIdentifier), NSBundle::bundleWithIdentifier(libraryIdentifier));
    EXPECT_EQ(&NSBundle::mainBundle(), &NSBundle::mainBundle());
}

TEST(NSBundle, HasNoneForAnIdentifierThatIsNotCompiledIn) {
    EXPECT_EQ(NSBundle::bundleWithIdentifier(QStringLiteral("org.vxkit.Missing")), nullptr);
}

TEST(NSBundle, RefusesIdentifiersThatLeadOutOfTheBundlesFolder) {
    for (const char* identifier : {"", "..", ".", "../images", "org.vxkit.Test/images", "/org.vxkit.Test"}) {
        const NSBundle* bundle = NSBundle::bundleWithIdentifier(QString::fromLatin1(identifier));
        EXPECT_EQ(bundle, nullptr) << identifier;
    }
}

TEST(NSBundle, FindsResourcesAtItsRootInImagesAndInNibs) {
    const NSBundle& bundle = NSBundle::mainBundle();
    EXPECT_EQ(bundle.pathForResource(QStringLiteral("About"), QStringLiteral("txt")), QStringLiteral(":/About.txt"));
    EXPECT_EQ(bundle.pathForResource(QStringLiteral("About"), QStringLiteral(".txt")), QStringLiteral(":/About.txt"));
    EXPECT_EQ(bundle.pathForResource(QStringLiteral("About.txt"), QString()), QStringLiteral(":/About.txt"));
    EXPECT_EQ(bundle.pathForResource(QStringLiteral("StatusIcon"), QStringLiteral("svg")),
              QStringLiteral(":/images/StatusIcon.svg"));
    EXPECT_EQ(bundle.pathForResource(QStringLiteral("Main"), QStringLiteral("ui")), QStringLiteral(":/nibs/Main.ui"));
}

TEST(NSBundle, FindsResourcesByTheFoldersInTheirNames) {
    EXPECT_EQ(NSBundle::mainBundle().pathForResource(QStringLiteral("nibs//Main"), QStringLiteral("ui")),
              QStringLiteral(":/nibs/Main.ui"));
}

TEST(NSBundle, HasNoPathForAMissingResource) {
    const NSBundle& bundle = NSBundle::mainBundle();
    EXPECT_TRUE(bundle.pathForResource(QStringLiteral("About"), QStringLiteral("html")).isNull());
    EXPECT_TRUE(bundle.pathForResource(QString(), QStringLiteral("txt")).isNull());
    EXPECT_TRUE(bundle.pathForImageResource(QStringLiteral("Missing")).isNull());
    EXPECT_TRUE(bundle.pathForImageResource(QString()).isNull());
}

TEST(NSBundle, TakesNoFolderForAResource) {
    EXPECT_TRUE(NSBundle::mainBundle().pathForResource(QStringLiteral("images"), QString()).isNull());
    EXPECT_TRUE(NSBundle::mainBundle().pathForImageResource(QStringLiteral("images")).isNull());
}

TEST(NSBundle, FindsNothingOutsideOfItself) {
    const NSBundle* bundle = NSBundle::bundleWithIdentifier(libraryIdentifier);
    ASSERT_NE(bundle, nullptr);
    EXPECT_TRUE(bundle->pathForResource(QStringLiteral("../../About"), QStringLiteral("txt")).isNull());
    EXPECT_TRUE(bundle->pathForImageResource(QStringLiteral("../../images/StatusIcon")).isNull());
    EXPECT_TRUE(bundle->pathForImageResource(QStringLiteral("StatusIcon")).isNull());
}

TEST(NSBundle, GivesOnePathForAnImageWithAndWithoutExtension) {
    const NSBundle& bundle = NSBundle::mainBundle();
    const QString path = QStringLiteral(":/images/StatusIcon.svg");
    for (const char* name : {"StatusIcon", "StatusIcon.svg", "images/StatusIcon", "./images//StatusIcon.svg"}) {
        EXPECT_EQ(bundle.pathForImageResource(QString::fromLatin1(name)), path) << name;
    }
    EXPECT_EQ(bundle.pathForImageResource(QStringLiteral("Dot")), QStringLiteral(":/images/Dot.png"));
}

TEST(NSBundle, PrefersTheNameAsItStandsThenTheVectorImage) {
    const NSBundle& bundle = NSBundle::mainBundle();
    EXPECT_EQ(bundle.pathForImageResource(QStringLiteral("Both.png")), QStringLiteral(":/Both.png"));
    EXPECT_EQ(bundle.pathForImageResource(QStringLiteral("Both")), QStringLiteral(":/Both.svg"));
}

TEST(NSBundle, TellsTheApplicationsNameVersionAndIdentifier) {
    QCoreApplication::setApplicationName(QStringLiteral("snippets"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("example.org"));
    const NSBundle& bundle = NSBundle::mainBundle();
    EXPECT_EQ(bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleName")), QStringLiteral("snippets"));
    EXPECT_EQ(bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleVersion")), QStringLiteral("1.2.3"));
    EXPECT_EQ(bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleIdentifier")),
              QStringLiteral("org.example.snippets"));
    EXPECT_TRUE(bundle.objectForInfoDictionaryKey(QStringLiteral("Unknown")).isNull());
}

TEST(NSBundle, TellsTheNameThatTheApplicationDisplays) {
    int argumentCount = 1;
    char program[] = "test";
    char* arguments[] = {program, nullptr};
    const QGuiApplication application(argumentCount, arguments);
    QGuiApplication::setApplicationName(QStringLiteral("snippets"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Snippets for All"));
    EXPECT_EQ(NSBundle::mainBundle().objectForInfoDictionaryKey(QStringLiteral("CFBundleName")),
              QStringLiteral("Snippets for All"));
}

TEST(NSBundle, IsIdentifiedByTheApplicationsNameAloneWithoutAnOrganization) {
    QCoreApplication::setApplicationName(QStringLiteral("snippets"));
    QCoreApplication::setOrganizationDomain(QString());
    EXPECT_EQ(NSBundle::mainBundle().bundleIdentifier(), QStringLiteral("snippets"));
}

TEST(NSBundle, OfALibraryTellsOnlyItsIdentifier) {
    const NSBundle* bundle = NSBundle::bundleWithIdentifier(libraryIdentifier);
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(bundle->objectForInfoDictionaryKey(QStringLiteral("CFBundleIdentifier")), libraryIdentifier);
    EXPECT_TRUE(bundle->objectForInfoDictionaryKey(QStringLiteral("CFBundleName")).isNull());
}
