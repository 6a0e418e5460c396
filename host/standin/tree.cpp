// SPDX-License-Identifier: MIT
#include "host/tree.h"

#include "host/standin/hosttree.h"

Tree::~Tree() = default;

Tree* Tree::Instance()
{
    return HostTree::s_newest;
}

void Tree::Enter(ValueBase* value, Tree* tree, const QString& path)
{
    value->m_tree = tree;
    value->m_path = path;
}

QString Tree::PathOf(const ValueBase* value)
{
    return value->m_path;
}

Tree* Tree::TreeOf(const ValueBase* value)
{
    return value->m_tree;
}

bool Tree::IsDeleted(const ValueBase* value)
{
    return value->m_isDeleted;
}

HostTree* HostTree::s_newest = nullptr;

HostTree::HostTree()
    : m_older(s_newest)
{
    s_newest = this;
}

HostTree::~HostTree()
{
    m_isClosing = true;
    while (!m_values.isEmpty()) {
        ValueBase* const value = m_values.first();
        // A value whose deletion led here is deleted by the caller that began that.
        if (IsDeleted(value))
            HostTree::Remove(value);
        else
            delete value;
    }
    HostTree** link = &s_newest;
    while (*link != this)
        link = &(*link)->m_older;
    *link = m_older;
}

ValueBase* HostTree::Find(const QString& path)
{
    return m_values.value(path);
}

bool HostTree::Insert(const QString& parentPath, ValueBase* value)
{
    const QLatin1Char separator('/');
    if (m_isClosing || !value || TreeOf(value) || IsDeleted(value))
        return false;
    const QString name = value->GetName();
    if (name.isEmpty() || name.contains(separator))
        return false;
    if (!parentPath.isEmpty() && !parentPath.endsWith(separator))
        return false;
    const QString path = parentPath + name;
    if (m_values.contains(path))
        return false;
    m_values.insert(path, value);
    Enter(value, this, path);
    return true;
}

void HostTree::Remove(ValueBase* value)
{
    m_values.remove(PathOf(value));
    Enter(value, nullptr, QString());
}
