// SPDX-License-Identifier: MIT
// The process-wide tree of values, addressed by path.
#pragma once

#include "host/valuebase.h"

/// A path is a chain of node names separated by "/". The part behind the last "/" is the value's
/// own name, the part up to and including it the path of its parent ("" at the top).
class HOST_API Tree
{
public:
    /// Null until the host has built the tree, and again after it took the tree down.
    static Tree* Instance();

    virtual ~Tree();

    /// The value registered at `path`, or null.
    virtual ValueBase* Find(const QString& path) = 0;

    /// Registers `value`, which carries its name already, under `parentPath`. From then on the
    /// tree owns it. False, and the value stays the caller's, when that parent has a value of the
    /// same name, when the value is null, in a tree already, or nameless ("/" is in no name), and
    /// when the parent path is neither empty nor ends in "/".
    virtual bool Insert(const QString& parentPath, ValueBase* value) = 0;

protected:
    Tree() = default;
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    /// Called by a value of this tree when it is destroyed.
    virtual void Remove(ValueBase* value) = 0;

    ///@{
    /// A tree keeps its book in the values: which tree a value is in, under which path, and whether
    /// it has announced its deletion.
    static void Enter(ValueBase* value, Tree* tree, const QString& path);
    static QString PathOf(const ValueBase* value);
    static Tree* TreeOf(const ValueBase* value);
    static bool IsDeleted(const ValueBase* value);
    ///@}

private:
    friend class ValueBase;
};
