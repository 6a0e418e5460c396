// SPDX-License-Identifier: MIT
// Private members that a test looks at because nothing public shows their effect. By the language's
// own rules an explicit instantiation may name them:
//
//     struct Secret { using Type = int Class::*; friend Type memberOf(Secret); };
//     template struct PrivateMember<Secret, &Class::m_secret>;
//     ... object.*memberOf(Secret())
#pragma once

template <typename Tag, typename Tag::Type Member>
struct PrivateMember
{
    friend typename Tag::Type memberOf(Tag) { return Member; }
};
