// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>

class QObject;

/// Who posts a notification: the identity of an object, never the object itself.
///
/// Made from a pointer of any type. Two pointers to one object are one sender even where the types differ and the
/// addresses with them, as they do for a class with several bases. A null pointer means "any sender" to an observer and
/// "no sender" to a post. The identity is an address: it says nothing after its object is gone.
class NSNotificationSender {
public:
    /// Any sender, or none.
    constexpr NSNotificationSender(std::nullptr_t = nullptr) {}
    /// The identity of `object`; any sender, or none, where that is null.
    template <class T>
    NSNotificationSender(const T* object) : m_identity(identityOf(object)) {}

    /// Whether it names somebody.
    [[nodiscard]] explicit operator bool() const { return m_identity != nullptr; }
    /// Whether both name the same object, or both nobody.
    friend bool operator==(NSNotificationSender, NSNotificationSender) = default;

private:
    template <class T>
    static const void* identityOf(const T* object) {
        if constexpr (std::is_polymorphic_v<T>) {
            return object ? dynamic_cast<const void*>(object) : nullptr;
        } else {
            return object;
        }
    }

    const void* m_identity = nullptr;
};

/// What an observer is handed. AppKit: `NSNotification`.
struct NSNotification {
    std::string_view name;       ///< valid while the notification is being delivered
    NSNotificationSender object; ///< who posted it, if anybody is named
    NSDictionary userInfo;       ///< what else the poster tells
};

class NSNotificationCenter;

/// A subscription that ends when this value is destroyed or assigned to. Movable, not copyable; may outlive the
/// centre's interest in it and may be destroyed by its own handler.
class VXKIT_EXPORT NSNotificationObservation {
public:
    /// No subscription.
    NSNotificationObservation() = default;
    /// Takes the subscription over; `other` has none then.
    NSNotificationObservation(NSNotificationObservation&& other) noexcept;
    /// Ends its own subscription and takes that of `other` over.
    NSNotificationObservation& operator=(NSNotificationObservation&& other) noexcept;
    NSNotificationObservation(const NSNotificationObservation&) = delete;
    NSNotificationObservation& operator=(const NSNotificationObservation&) = delete;
    ~NSNotificationObservation();

private:
    friend NSNotificationCenter;
    NSNotificationObservation(NSNotificationCenter& centre, std::string name, std::uint64_t sequence);

    void swap(NSNotificationObservation& other) noexcept;

    NSNotificationCenter* m_centre = nullptr;
    std::string m_name;
    std::uint64_t m_sequence = 0;
};

/// Delivers named notifications to whoever asked for them: at once, before the post returns, in the order in which the
/// observers subscribed, those of every name among them.
///
/// An observer added while a notification is being delivered does not get that one; one that is removed, or dies, is
/// not called any more, even when it was still to come. An exception that leaves a handler leaves the post; the
/// observers after it are not called. Posting costs in proportion to the observers of that name and of every name, not
/// to those of other names. Main thread only. A centre must outlive the subscriptions to it; the default one is never
/// destroyed. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSNotificationCenter {
public:
    /// What is called with each notification.
    using Handler = std::function<void(const NSNotification&)>;

    /// A centre of one's own; most want defaultCenter.
    NSNotificationCenter();
    NSNotificationCenter(const NSNotificationCenter&) = delete;
    NSNotificationCenter& operator=(const NSNotificationCenter&) = delete;
    ~NSNotificationCenter();

    /// The centre of the process. AppKit: `+defaultCenter`.
    [[nodiscard]] static NSNotificationCenter& defaultCenter();

    /// Calls `selector` for every notification of that `name` (every name when empty) from that `object` (every sender
    /// when null), for as long as `observer` lives or until it is removed. Subscribing twice is being called twice.
    /// AppKit: `-addObserver:selector:name:object:`.
    void addObserver(QObject* observer, Handler selector, std::string_view name, NSNotificationSender object);

    /// The same for as long as the value that it returns lives. AppKit: `-addObserverForName:object:queue:usingBlock:`.
    [[nodiscard]] NSNotificationObservation addObserverForName(std::string_view name, NSNotificationSender object,
                                                               Handler block);

    /// Ends every subscription made for `observer`. AppKit: `-removeObserver:`.
    void removeObserver(const QObject* observer);

    /// Delivers a notification and returns when every observer has been called.
    /// AppKit: `-postNotificationName:object:userInfo:`.
    void postNotificationName(std::string_view name, NSNotificationSender object, const NSDictionary& userInfo = {});

private:
    friend NSNotificationObservation;

    struct Subscription {
        NSNotificationSender object;
        Handler handler;
    };
    // By number of subscription, so that a delivery can go on from where it was whatever happened to its neighbours.
    using Subscriptions = std::map<std::uint64_t, std::shared_ptr<const Subscription>>;

    std::uint64_t subscribe(std::string_view name, Subscription subscription);
    void unsubscribe(const std::string& name, std::uint64_t sequence);

    std::unordered_map<std::string, Subscriptions> m_byName; // subscriptions to every name stand under the empty one
    std::unordered_multimap<const QObject*, std::pair<std::string, std::uint64_t>> m_byObserver;
    std::uint64_t m_nextSequence = 1;
};
