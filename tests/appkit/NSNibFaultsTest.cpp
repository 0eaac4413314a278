// SPDX-License-Identifier: MIT
// Nibs that are not there, or have faults.
#include "NSNibTestSupport.h"

#include <QSlider>

#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

TEST_F(NSNibTest, LogsANibThatIsNotThereOnce) {
    PanelOwner owner;
    for (const char* name : {"Missing", "../nibs/Panel", "../../etc/passwd", "", "nibs"}) {
        const std::vector<std::string> log = linesLoggedBy([&] {
            NSNib nib(QString::fromLatin1(name));
            EXPECT_FALSE(nib.isValid());
            EXPECT_FALSE(nib.instantiateNibWithOwner(owner));
            EXPECT_FALSE(nib.instantiateNibWithOwner(owner));
        });
        EXPECT_THAT(log, ElementsAre(HasSubstr(std::string(name) + ".ui: there is no such nib"))) << name;
    }
    EXPECT_EQ(owner.panel, nullptr);
}

TEST_F(NSNibTest, LogsWhereAFileIsNoForm) {
    const std::map<QString, std::string> faults = {
        {QStringLiteral("Empty"), "line 1, column 0: Premature end of document."},
        {QStringLiteral("Garbage"), "line 1, column "},
        {QStringLiteral("Mismatched"), "line 4, column 10: "},
        {QStringLiteral("Bogus"), "line 1, column 63: there is an element \"bogus\" in one \"widget\""},
        {QStringLiteral("Old"), "line 1, column 18: it is a form of Designer's version 3.0"},
        {QStringLiteral("Page"), "line 1, column 6: it is not a form of Designer's"},
        {QStringLiteral("Nothing"), "there is no widget in it"},
    };
    for (const auto& [name, fault] : faults) {
        PanelOwner owner;
        const std::string path = ":/nibs/" + name.toStdString() + ".ui: ";
        const std::vector<std::string> log = linesLoggedBy([&, nibName = name] {
            NSNib nib(nibName);
            EXPECT_FALSE(nib.isValid());
            EXPECT_FALSE(nib.instantiateNibWithOwner(owner));
        });
        EXPECT_THAT(log, ElementsAre(HasSubstr(path + fault)));
        EXPECT_EQ(owner.panel, nullptr);
    }
}

TEST_F(NSNibTest, LogsEachFaultOfAFileOnceAndLoadsTheRest) {
    OneOutlet<NSView> owner(QStringLiteral("_view"));
    const std::vector<std::string> log = faultsOf(QStringLiteral("Faults"), owner);
    const auto fault = [](const char* text) { return AllOf(HasSubstr(":/nibs/Faults.ui: "), HasSubstr(text)); };
    EXPECT_THAT(log, UnorderedElementsAre(fault("the class AcmeDial is not known"),
                                          fault("the class AcmeNothing is not known"),
                                          fault("the class AcmeCircle is not known"),
                                          fault("\"innerWindow\" of class NSWindow is a window within a view"),
                                          fault("\"NSViewFloats\" is no autoresizing mask"),
                                          fault("\"Qt::SomeFocus\" is no value of the property \"focusPolicy\""),
                                          fault("there is no widget \"missing\", which the tab order names"),
                                          fault("clicked() of \"button\" cannot be connected to fly() of \"label\""),
                                          fault("there is no object \"nobody\", which a connection names"),
                                          fault("the owner has no action \"go:\", which \"label\" names"),
                                          fault("the owner has no action \"fly:\", which \"button\" names")));
    ASSERT_NE(owner.object, nullptr);
    const auto* dial = owner.object->findChild<QSlider*>(QStringLiteral("dial"));
    ASSERT_NE(dial, nullptr) << "what it extends, by way of what that extends";
    EXPECT_EQ(dial->value(), 42);
    EXPECT_EQ(dial->geometry(), QRect(1, 2, 30, 40));
    EXPECT_NE(owner.object->findChild<QLabel*>(QStringLiteral("within")), nullptr);
}

TEST_F(NSNibTest, LogsOutletsThatCannotBeConnected) {
    class Owner : public NSNibOwner {
    public:
        void connectNib(NSNibConnections& connections) override {
            connections.outlet(QStringLiteral("third"), third);
            connections.outlet(QStringLiteral("first"), first);
            connections.outlet(QStringLiteral("second"), second);
        }
        NSView* third = reinterpret_cast<NSView*>(1);
        NSButton* first = reinterpret_cast<NSButton*>(1);
        QPointer<NSView> second;
    };
    Owner owner;
    const std::vector<std::string> log = faultsOf(QStringLiteral("View"), owner);
    EXPECT_THAT(log, ElementsAre(HasSubstr(":/nibs/View.ui: there is no object \"third\" for the outlet"),
                                 HasSubstr(":/nibs/View.ui: the object \"first\" is of class WritingView, the outlet "
                                           "for it of class NSButton")));
    EXPECT_EQ(owner.third, nullptr);
    EXPECT_EQ(owner.first, nullptr);
    EXPECT_NE(owner.second, nullptr);
}

TEST_F(NSNibTest, HasNoObjectForAnOutletWithoutAName) {
    OneOutlet<NSView> owner{QString()};
    EXPECT_THAT(faultsOf(QStringLiteral("View"), owner),
                ElementsAre(HasSubstr(":/nibs/View.ui: there is no object \"\" for the outlet")));
    EXPECT_EQ(owner.object, nullptr);
}

TEST_F(NSNibTest, MakesAWindowOfTheUsualStyleWhereThatOfTheFileIsNone) {
    OneOutlet<NSWindow> owner(QStringLiteral("window"));
    EXPECT_THAT(faultsOf(QStringLiteral("Style"), owner),
                ElementsAre(HasSubstr(":/nibs/Style.ui: \"NSRoundWindowMask\" is no style mask")));
    ASSERT_NE(owner.object, nullptr);
    EXPECT_EQ(owner.object->styleMask(),
              NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask | NSResizableWindowMask);
}

TEST_F(NSNibTest, LogsAnActionOfWhatSendsNone) {
    class Owner : public NSNibOwner {
    public:
        void connectNib(NSNibConnections& connections) override {
            connections.action(QStringLiteral("go:"), [](QObject*) {});
            connections.action(QStringLiteral("fly:"), [](QObject*) {});
        }
    };
    Owner owner;
    EXPECT_THAT(faultsOf(QStringLiteral("Faults"), owner),
                testing::Contains(HasSubstr("\"label\" of class NSTextField sends no action")));
}

TEST_F(NSNibTest, OutlastsPropertiesOfWrongTypes) {
    OneOutlet<NSView> owner(QStringLiteral("_view"));
    const std::vector<std::string> log = faultsOf(QStringLiteral("WrongTypes"), owner);
    const auto fault = [](const char* text) { return AllOf(HasSubstr(":/nibs/WrongTypes.ui: "), HasSubstr(text)); };
    EXPECT_THAT(log,
                UnorderedElementsAre(fault("the property \"toolTip\" has no value"),
                                     fault("\"Sideways\" is no value of the property \"cursor\""),
                                     fault("\"Wide\" is no value of the property \"hsizetype\""),
                                     fault("\"High\" is no value of the property \"vsizetype\""),
                                     fault("\"Nose\" is no value of the property \"role\""),
                                     fault("\"Hairy\" is no value of the property \"brushstyle\""),
                                     fault("the layout class AcmeLayout is not known"),
                                     fault("\"QLayout::Whatever\" is no value of the property \"sizeConstraint\"")));
    ASSERT_NE(owner.object, nullptr);
    EXPECT_NE(owner.object->findChild<QLabel*>(QStringLiteral("inLayout")), nullptr);
}
