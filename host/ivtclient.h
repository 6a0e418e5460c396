// SPDX-License-Identifier: MIT
// A client object of the host that takes an interest in a value.
#pragma once

#include "host/hostapi.h"

class ValueBase;

/// Implemented by the host; the library calls it and never deletes it.
class HOST_API IVtClient
{
public:
    virtual ~IVtClient();

    /// Hands `value` over to the client, which does not own it. The library passes the mode 0.
    virtual void HandOver(ValueBase* value, int mode) = 0;

protected:
    IVtClient() = default;
    IVtClient(const IVtClient&) = default;
    IVtClient& operator=(const IVtClient&) = default;
};
