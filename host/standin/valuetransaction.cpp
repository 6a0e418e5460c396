// SPDX-License-Identifier: MIT
#include "host/standin/valuetransactions.h"
#include "host/valuenumeric.h"

#include <vector>

class ValueTransaction::Impl
{
public:
    std::shared_ptr<ValueBase::Transactions> transactions;
    std::vector<TChangeCode> codes;
    IObserver* cause;
};

ValueTransaction::ValueTransaction(ValueBase* value, std::initializer_list<TChangeCode> codes,
                                   IObserver* cause)
    : m_impl(std::make_unique<Impl>())
{
    if (!value)
        return;
    if (!value->m_transactions)
        value->m_transactions = std::make_shared<ValueBase::Transactions>(value);
    m_impl->transactions = value->m_transactions;
    m_impl->cause = cause;
    for (const TChangeCode code : codes) {
        if (std::find(m_impl->codes.begin(), m_impl->codes.end(), code) != m_impl->codes.end())
            continue;
        m_impl->codes.push_back(code);
        m_impl->transactions->Hold(code);
    }
}

ValueTransaction::~ValueTransaction()
{
    for (const TChangeCode code : m_impl->codes)
        m_impl->transactions->Release(code);
    for (const TChangeCode code : m_impl->codes) {
        if (m_impl->transactions->value)
            m_impl->transactions->value->HasChanged(code, m_impl->cause);
    }
}
