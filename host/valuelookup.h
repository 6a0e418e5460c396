// SPDX-License-Identifier: MIT
// The two ways in which the library gets at a value of the tree.
#pragma once

#include "host/trace.h"
#include "host/tree.h"

/// The value at `path`; null without a tree, when there is none, or one of another kind.
template <typename Kind>
Kind* findValue(const QString& path)
{
    Tree* const tree = Tree::Instance();
    return tree ? dynamic_cast<Kind*>(tree->Find(path)) : nullptr;
}

/// The value at `path`, created when there is none, and registers `observer` when that is given.
///
/// Never null. Where the tree refuses the new value, because one of another kind holds the name
/// or there is no tree, that is traced and the value is returned all the same: outside the tree,
/// usable, and never freed.
template <typename Kind>
Kind* findOrCreateValue(const QString& path, IObserver* observer = nullptr)
{
    Kind* value = findValue<Kind>(path);
    if (!value) {
        const int nameStart = path.lastIndexOf(QLatin1Char('/')) + 1;
        value = new Kind;
        value->SetName(path.mid(nameStart), nullptr);
        Tree* const tree = Tree::Instance();
        if (!tree || !tree->Insert(path.left(nameStart), value)) {
            traceMessage(
                QStringLiteral("!!!!!!!MEMORY LEAK! The value with the path '%1' could not be "
                               "created!!! A value of this name already exists for a "
                               "different type!!!!!!!!")
                    .arg(path),
                QStringLiteral("valueclasses\\valueobservermacros"), 297);
        }
    }
    if (observer)
        value->AddObserver(observer);
    return value;
}
