// SPDX-License-Identifier: MIT
// The value tree of the stand-in host, and how its host gets values into it.
#pragma once

#include "host/tree.h"

#include <QMap>

#include <memory>

/// While it lives it is `Tree::Instance()`; of several the newest is. Destroying it deletes its
/// values in the order of their paths, each announcing that; observers may delete further values
/// meanwhile, but a value can no longer be inserted. For one thread.
class HOST_API HostTree : public Tree
{
public:
    HostTree();
    ~HostTree() override;

    ValueBase* Find(const QString& path) override;
    bool Insert(const QString& parentPath, ValueBase* value) override;

    /// A new value at `path`, owned by the tree; null when the tree refuses it.
    template <typename Kind>
    Kind* Add(const QString& path)
    {
        const int nameStart = path.lastIndexOf(QLatin1Char('/')) + 1;
        auto value = std::make_unique<Kind>();
        value->SetName(path.mid(nameStart), nullptr);
        return Insert(path.left(nameStart), value.get()) ? value.release() : nullptr;
    }

protected:
    void Remove(ValueBase* value) override;

private:
    friend class Tree;
    static HostTree* s_newest;

    HostTree* m_older;
    bool m_isClosing = false;
    QMap<QString, ValueBase*> m_values; ///< by path
};
