// SPDX-License-Identifier: MIT
// The text, flag and number values, and the one instantiation of each kind.
#include "host/values.h"

#include "host/standin/valuetransactions.h"

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace {

ValueType typeOf(const QString&)
{
    return eTYPE_TEXT;
}

ValueType typeOf(bool)
{
    return eTYPE_FLAG;
}

ValueType typeOf(int)
{
    return eTYPE_INTEGER;
}

ValueType typeOf(double)
{
    return eTYPE_REAL;
}

QString typeNameOf(const QString&)
{
    return QStringLiteral("text");
}

QString typeNameOf(bool)
{
    return QStringLiteral("flag");
}

QString typeNameOf(int)
{
    return QStringLiteral("integer");
}

QString typeNameOf(double)
{
    return QStringLiteral("real");
}

template <typename T>
bool isNumber(T value)
{
    if constexpr (std::is_floating_point_v<T>)
        return !std::isnan(value);
    else
        return true;
}

template <typename T>
constexpr T lowestNumber()
{
    if constexpr (std::is_floating_point_v<T>)
        return -std::numeric_limits<T>::infinity();
    else
        return std::numeric_limits<T>::lowest();
}

template <typename T>
constexpr T highestNumber()
{
    if constexpr (std::is_floating_point_v<T>)
        return std::numeric_limits<T>::infinity();
    else
        return std::numeric_limits<T>::max();
}

} // namespace

template <typename T, typename Format, typename Stream>
Value<T, Format, Stream>::Value() = default;

template <typename T, typename Format, typename Stream>
Value<T, Format, Stream>::~Value()
{
    this->AnnounceDeletion();
}

template <typename T, typename Format, typename Stream>
void Value<T, Format, Stream>::SetStringValue(QString text, IObserver* cause)
{
    T value{};
    if (Format::FromText(text, value))
        SetValue(value, cause);
}

template <typename T, typename Format, typename Stream>
QString Value<T, Format, Stream>::GetStringValue()
{
    return Format::ToText(m_value);
}

template <typename T, typename Format, typename Stream>
QString Value<T, Format, Stream>::GetCommandStringForTransmission()
{
    return this->GetName() + QLatin1Char('=') + Stream::ToStream(m_value);
}

template <typename T, typename Format, typename Stream>
bool Value<T, Format, Stream>::SetCommandString(const QString& command, IObserver* cause)
{
    const QString prefix = this->GetName() + QLatin1Char('=');
    if (!command.startsWith(prefix))
        return false;
    T value{};
    if (!Stream::FromStream(command.mid(prefix.size()), value))
        return false;
    SetValue(value, cause);
    return true;
}

template <typename T, typename Format, typename Stream>
ValueType Value<T, Format, Stream>::GetType()
{
    return typeOf(m_value);
}

template <typename T, typename Format, typename Stream>
QString Value<T, Format, Stream>::GetTypeName()
{
    return typeNameOf(m_value);
}

template <typename T, typename Format, typename Stream>
bool Value<T, Format, Stream>::Assign(const ValueBase& other)
{
    const auto* const same = dynamic_cast<const Value*>(&other);
    if (!same)
        return false;
    SetValue(same->m_value, nullptr);
    return true;
}

template <typename T, typename Format, typename Stream>
bool Value<T, Format, Stream>::Compare(const ValueBase* other)
{
    const auto* const same = dynamic_cast<const Value*>(other);
    return same && same->m_value == m_value;
}

template <typename T, typename Format, typename Stream>
void Value<T, Format, Stream>::SetValue(T value, IObserver* cause)
{
    if (value == m_value)
        return;
    m_value = std::move(value);
    this->HasChanged(eCHANGE_CONTENT, cause);
}

template <typename T, typename Format, typename Stream>
T Value<T, Format, Stream>::GetValue()
{
    return m_value;
}

INumeric::~INumeric() = default;

template <typename T, typename Format, typename Stream>
ValueNumeric<T, Format, Stream>::ValueNumeric()
    : m_min(lowestNumber<T>())
    , m_max(highestNumber<T>())
{
}

template <typename T, typename Format, typename Stream>
ValueNumeric<T, Format, Stream>::~ValueNumeric()
{
    this->AnnounceDeletion();
}

template <typename T, typename Format, typename Stream>
void ValueNumeric<T, Format, Stream>::SetStringValue(QString text, IObserver* cause)
{
    Value<T, Format, Stream>::SetStringValue(std::move(text), cause);
}

template <typename T, typename Format, typename Stream>
ValueType ValueNumeric<T, Format, Stream>::GetType()
{
    return Value<T, Format, Stream>::GetType();
}

template <typename T, typename Format, typename Stream>
QString ValueNumeric<T, Format, Stream>::GetTypeName()
{
    return Value<T, Format, Stream>::GetTypeName();
}

template <typename T, typename Format, typename Stream>
void ValueNumeric<T, Format, Stream>::SetValue(T value, IObserver* cause)
{
    if (isNumber(value))
        Value<T, Format, Stream>::SetValue(Clamped(value), cause);
}

template <typename T, typename Format, typename Stream>
void ValueNumeric<T, Format, Stream>::SetMinMax(T min, T max, T step, IObserver* cause)
{
    SetRange(isNumber(min) ? min : m_min, isNumber(max) ? max : m_max,
             isNumber(step) ? step : m_step, cause);
}

template <typename T, typename Format, typename Stream>
void ValueNumeric<T, Format, Stream>::SetMin(T min, IObserver* cause)
{
    SetRange(isNumber(min) ? min : m_min, m_max, m_step, cause);
}

template <typename T, typename Format, typename Stream>
void ValueNumeric<T, Format, Stream>::SetMax(T max, IObserver* cause)
{
    SetRange(m_min, isNumber(max) ? max : m_max, m_step, cause);
}

template <typename T, typename Format, typename Stream>
void ValueNumeric<T, Format, Stream>::SetStep(T step, IObserver* cause)
{
    SetRange(m_min, m_max, isNumber(step) ? step : m_step, cause);
}

template <typename T, typename Format, typename Stream>
void ValueNumeric<T, Format, Stream>::SetRange(T min, T max, T step, IObserver* cause)
{
    if (min == m_min && max == m_max && step == m_step)
        return;
    m_min = min;
    m_max = max;
    m_step = step;
    // One change, one announcement, whether or not the number moves with the range.
    const T number = this->GetValue();
    if (Clamped(number) != number)
        Value<T, Format, Stream>::SetValue(Clamped(number), cause);
    else
        this->HasChanged(eCHANGE_CONTENT, cause);
}

template <typename T, typename Format, typename Stream>
T ValueNumeric<T, Format, Stream>::Clamped(T number) const
{
    return qMax(m_min, qMin(number, m_max));
}

template <typename T, typename Format, typename Stream>
T ValueNumeric<T, Format, Stream>::GetMin()
{
    return m_min;
}

template <typename T, typename Format, typename Stream>
T ValueNumeric<T, Format, Stream>::GetMax()
{
    return qMax(m_min, m_max);
}

template <typename T, typename Format, typename Stream>
T ValueNumeric<T, Format, Stream>::GetStep()
{
    return m_step;
}

template <typename T, typename Format, typename Stream>
ValueTransaction*
ValueNumeric<T, Format, Stream>::CreateTransaction(std::initializer_list<TChangeCode> codes,
                                                   IObserver* cause)
{
    return new ValueTransaction(this, codes, cause);
}

template <typename T, typename Format, typename Stream>
double ValueNumeric<T, Format, Stream>::GetRealValue()
{
    return this->GetValue();
}

// One instantiation for both sides of the library boundary.
template class Value<QString, FormatString<QString>, StreamFormat<QString, FormatString<QString>>>;
template class Value<bool, FormatBool<bool>, StreamFormat<bool, FormatBool<bool>>>;
template class Value<int, FormatInt<int>, StreamFormat<int, FormatInt<int>>>;
template class Value<double, FormatFloat<double>, StreamFormat<double, FormatFloat<double>>>;
template class ValueNumeric<int, FormatInt<int>, StreamFormat<int, FormatInt<int>>>;
template class ValueNumeric<double, FormatFloat<double>, StreamFormat<double, FormatFloat<double>>>;
