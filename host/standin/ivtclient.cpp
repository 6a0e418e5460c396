// SPDX-License-Identifier: MIT
#include "host/ivtclient.h"

IVtClient::~IVtClient() = default;
