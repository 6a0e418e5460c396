// SPDX-License-Identifier: MIT
// Private members that a test looks at because nothing public shows their effect. By the language's
// own rules an explicit instantiation may name them:
//
//     PRIVATE_MEMBER(Secret, Class, m_secret, int Class::*);
//     ... object.*memberOf(Secret())
#pragma once

template <typename Tag, typename Tag::Type Member>
struct PrivateMember
{
    friend typename Tag::Type memberOf(Tag) { return Member; }
};

/// Declares `tag` for `of::member`; what follows is the type of the pointer to it.
#define PRIVATE_MEMBER(tag, of, member, ...)                                                       \
    struct tag                                                                                     \
    {                                                                                              \
        using Type = __VA_ARGS__;                                                                  \
        friend Type memberOf(tag);                                                                 \
    };                                                                                             \
    template struct PrivateMember<tag, &of::member>
