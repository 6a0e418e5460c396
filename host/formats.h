// SPDX-License-Identifier: MIT
// How each kind of value writes itself as text and reads itself back.
#pragma once

#include "host/hostapi.h"

#include <QString>

/// Text as it stands.
template <typename T>
struct FormatString
{
    /// The value as text.
    static QString ToText(const T& value) { return value; }
    /// Reads text back; false, and `value` as it was, for text that is no such value.
    static bool FromText(const QString& text, T& value)
    {
        value = text;
        return true;
    }
};

/// "1" and "0"; reads "true" and "false" (any case) and whole numbers as well.
template <typename T>
struct FormatBool
{
    /// The value as text.
    static QString ToText(const T& value)
    {
        return value ? QStringLiteral("1") : QStringLiteral("0");
    }
    /// Reads text back; false, and `value` as it was, for text that is no such value.
    static bool FromText(const QString& text, T& value)
    {
        const QString word = text.trimmed();
        if (word.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) {
            value = true;
            return true;
        }
        if (word.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) {
            value = false;
            return true;
        }
        bool ok = false;
        const int number = word.toInt(&ok);
        if (ok)
            value = number != 0;
        return ok;
    }
};

/// A decimal whole number.
template <typename T>
struct FormatInt
{
    /// The value as text.
    static QString ToText(const T& value) { return QString::number(value); }
    /// Reads text back; false, and `value` as it was, for text that is no such value.
    static bool FromText(const QString& text, T& value)
    {
        bool ok = false;
        const T number = text.trimmed().toInt(&ok);
        if (ok)
            value = number;
        return ok;
    }
};

/// A real number with a decimal point, in as many digits as it takes to read it back unchanged.
template <typename T>
struct FormatFloat
{
    /// The value as text.
    static QString ToText(const T& value) { return QString::number(value, 'g', 17); }
    /// Reads text back; false, and `value` as it was, for text that is no such value.
    static bool FromText(const QString& text, T& value)
    {
        bool ok = false;
        const T number = text.trimmed().toDouble(&ok);
        if (ok)
            value = number;
        return ok;
    }
};

/// The form in which a value travels in a command stream: its text format.
template <typename T, typename Format>
struct StreamFormat
{
    /// The value as part of a command.
    static QString ToStream(const T& value) { return Format::ToText(value); }
    /// As `FromText`.
    static bool FromStream(const QString& text, T& value) { return Format::FromText(text, value); }
};
