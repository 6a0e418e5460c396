// SPDX-License-Identifier: MIT
// A value that holds a number with a range and a step.
#pragma once

#include "host/value.h"

#include <initializer_list>

/// Reads any numeric value as a real number, whatever its own type is.
class HOST_API INumeric
{
public:
    virtual ~INumeric();
    /// The present number.
    virtual double GetRealValue() = 0;

protected:
    INumeric() = default;
    INumeric(const INumeric&) = default;
    INumeric& operator=(const INumeric&) = default;
};

/// Gathers the announcements of several changes; the host's own plumbing.
///
/// While it lives, the value keeps the announcements of its codes to itself. When it is deleted,
/// each code is announced once to everybody but `cause`, unless the value is gone by then. Inside
/// another transaction of the same value the outer one announces.
class HOST_API ValueTransaction
{
public:
    /// Begins to hold the codes back. `value` may go before the transaction does.
    ValueTransaction(ValueBase* value, std::initializer_list<TChangeCode> codes, IObserver* cause);
    ~ValueTransaction();

    ValueTransaction(const ValueTransaction&) = delete;
    ValueTransaction& operator=(const ValueTransaction&) = delete;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

/// Without a range (before `SetMinMax`, `SetMin` or `SetMax`) every number is accepted. With one,
/// a number outside is clamped to the nearer end. A maximum below its minimum counts as equal to
/// the minimum. What is not a number (NaN) changes nothing, as a number, an end or a step.
template <typename T, typename Format, typename Stream = StreamFormat<T, Format>>
class HOST_API ValueNumeric : public Value<T, Format, Stream>, public INumeric
{
public:
    ValueNumeric();
    ~ValueNumeric() override;

    void SetStringValue(QString text, IObserver* cause) override;
    ValueType GetType() override;
    QString GetTypeName() override;
    void SetValue(T value, IObserver* cause) override;

    /// Clamps the present number at once and announces change code 3 to everybody but `cause`, as
    /// do the setters of one end or of the step; what changes nothing announces nothing.
    virtual void SetMinMax(T min, T max, T step, IObserver* cause);
    ///@{
    /// As `SetMinMax`, for one of the three.
    virtual void SetMin(T min, IObserver* cause);
    virtual void SetMax(T max, IObserver* cause);
    virtual void SetStep(T step, IObserver* cause);
    ///@}
    /// Without a lower end the lowest number (minus infinity for a real one).
    virtual T GetMin();
    /// Without an upper end the highest number (infinity for a real one).
    virtual T GetMax();
    /// 0 before it was set; nothing is rounded to it.
    virtual T GetStep();
    /// The caller deletes the transaction, which announces the codes then.
    virtual ValueTransaction* CreateTransaction(std::initializer_list<TChangeCode> codes,
                                                IObserver* cause);

    double GetRealValue() override;

private:
    void SetRange(T min, T max, T step, IObserver* cause);
    T Clamped(T number) const;

    T m_min;
    T m_max; ///< as it was set, also when it lies below the minimum
    T m_step{};
};
