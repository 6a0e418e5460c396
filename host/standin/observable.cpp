// SPDX-License-Identifier: MIT
#include "host/observable.h"

IObserver::~IObserver() = default;
