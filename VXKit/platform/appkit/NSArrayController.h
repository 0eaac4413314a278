// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QObject>

#include <cstddef>
#include <string_view>
#include <vector>

/// The objects of a table, each a dictionary, in the order in which its rows show them.
///
/// A table that has one for its data source follows what changes in it. The order is that in which the objects were
/// set until it is sorted. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSArrayController : public QObject {
    Q_OBJECT

public:
    /// A controller of the objects `content`, in their order. AppKit: `-initWithContent:`.
    explicit NSArrayController(NSArray content = {}, QObject* parent = nullptr);
    ~NSArrayController() override;

    /// The objects in the order of the rows, borrowed until something is changed. A subclass with objects of its own
    /// answers them here. AppKit: `-arrangedObjects`.
    [[nodiscard]] virtual const NSArray& arrangedObjects() const;

    /// Other objects in place of those that there are. AppKit: `-setContent:`.
    void setContent(NSArray content);
    /// AppKit: `-addObject:`.
    void addObject(NSPropertyList object);
    /// Nothing where there is no such object. AppKit: `-removeObjectAtArrangedObjectIndex:`.
    void removeObjectAtArrangedObjectIndex(std::size_t index);

    /// Puts `value` under `key` in the object at `index`. False where there is no such object or it is no dictionary.
    /// AppKit: `-setValue:forKey:` of the object.
    virtual bool setValue(const NSPropertyList& value, std::string_view key, std::size_t index);

    /// Orders the objects by their values under `key`: numbers by size, before text, which goes by the locale without
    /// regard to case; objects without the key come first. Equal ones keep their order. AppKit: `-setSortDescriptors:`.
    virtual void sort(std::string_view key, bool ascending);

Q_SIGNALS:
    /// Before the objects are others, or of another number.
    void contentWillChange();
    /// After that.
    void contentDidChange();
    /// Before they are put in another order.
    void orderWillChange();
    /// After that; `order` tells of each place which one its object had before.
    void orderDidChange(const std::vector<int>& order);
    /// After a value of one of them has changed.
    void valueDidChange(int index);

private:
    NSArray m_content;
};
