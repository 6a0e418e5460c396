// SPDX-License-Identifier: MIT
// No code: the target that the headers of all tests are compiled for.
