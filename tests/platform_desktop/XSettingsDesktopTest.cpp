// SPDX-License-Identifier: MIT
// The settings of a manager on a real X server.
#include "PublishedXSettings.h"

#include <VXKit/platform/desktop/XSettings.h>

#include <QTest>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

namespace {

constexpr const char* animations = "Gtk/EnableAnimations";

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

/// A settings manager, on a connection of its own as another program has it; it goes when its connection does.
class Manager {
public:
    explicit Manager(int animationsAreEnabled) {
        const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(m_x.get())).data;
        xcb_create_window(m_x.get(), XCB_COPY_FROM_PARENT, m_window, screen.root, -1, -1, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        publish(animationsAreEnabled);
        xcb_set_selection_owner(m_x.get(), m_window, atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
        xcb_client_message_event_t announcement{};
        announcement.response_type = XCB_CLIENT_MESSAGE;
        announcement.format = 32;
        announcement.window = screen.root;
        announcement.type = atom("MANAGER");
        announcement.data.data32[1] = atom("_XSETTINGS_S0");
        announcement.data.data32[2] = m_window;
        xcb_send_event(m_x.get(), 0, screen.root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&announcement));
        xcb_flush(m_x.get());
    }

    void publish(int animationsAreEnabled) {
        const QByteArray settings = PublishedXSettings(ByteOrder::Little)
                                        .string("Net/ThemeName", "Adwaita")
                                        .integer(animations, animationsAreEnabled)
                                        .bytes();
        const xcb_atom_t property = atom("_XSETTINGS_SETTINGS");
        xcb_change_property(m_x.get(), XCB_PROP_MODE_REPLACE, m_window, property, property, 8,
                            static_cast<std::uint32_t>(settings.size()), settings.constData());
        xcb_flush(m_x.get());
    }

private:
    struct Disconnect {
        void operator()(xcb_connection_t* x) const { xcb_disconnect(x); }
    };

    xcb_atom_t atom(const char* name) const {
        const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(
            m_x.get(), xcb_intern_atom(m_x.get(), 0, static_cast<std::uint16_t>(std::strlen(name)), name), nullptr));
        return reply->atom;
    }

    std::unique_ptr<xcb_connection_t, Disconnect> m_x{xcb_connect(nullptr, nullptr)};
    xcb_window_t m_window = xcb_generate_id(m_x.get());
};

} // namespace

TEST(XSettings, FollowsAManagerThatComesAndGoesAndChangesItsMind) {
    const XSettings settings;
    const auto become = [&](std::optional<int> value) {
        return QTest::qWaitFor([&] { return settings.integer(animations) == value; });
    };
    EXPECT_EQ(settings.integer(animations), std::nullopt);
    auto manager = std::make_unique<Manager>(0);
    EXPECT_TRUE(become(0));
    manager->publish(1);
    EXPECT_TRUE(become(1));
    manager->publish(0);
    EXPECT_TRUE(become(0));
    const XSettings later;
    EXPECT_EQ(later.integer(animations), 0) << "one that is there already";
    manager.reset();
    EXPECT_TRUE(become(std::nullopt));
    manager = std::make_unique<Manager>(1);
    EXPECT_TRUE(become(1));
}
