// SPDX-License-Identifier: MIT
// A value that holds one text or one flag.
#pragma once

#include "host/formats.h"
#include "host/valuebase.h"

/// `Format` writes the value as text, `Stream` as part of a command.
template <typename T, typename Format, typename Stream = StreamFormat<T, Format>>
class HOST_API Value : public ValueBase
{
public:
    Value();
    ~Value() override;

    void SetStringValue(QString text, IObserver* cause) override;
    QString GetStringValue() override;
    QString GetCommandStringForTransmission() override;
    using ValueBase::SetCommandString;
    bool SetCommandString(const QString& command, IObserver* cause) override;
    ValueType GetType() override;
    QString GetTypeName() override;
    bool Assign(const ValueBase& other) override;
    bool Compare(const ValueBase* other) override;

    /// Announces change code 3 to everybody but `cause`. Writing what the value holds already
    /// announces nothing; use `HasChanged` to announce it again.
    virtual void SetValue(T value, IObserver* cause);
    /// The present content; empty, false or 0 at first.
    virtual T GetValue();

private:
    T m_value{};
};
