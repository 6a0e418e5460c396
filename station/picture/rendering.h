// SPDX-License-Identifier: MIT
// A drawing (SVG) as an image (PNG), for who shows pictures where no browser is.
#pragma once

#include <QByteArray>

namespace inspect {

/// An image as wide and high as `svg` says, in pixels; empty where it is no drawing or too large
/// for an image.
QByteArray rendered(const QByteArray& svg);

} // namespace inspect
