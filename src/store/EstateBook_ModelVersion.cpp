// SPDX-License-Identifier: MIT
#include "store/EstateBook_ModelVersion.hpp"

constexpr unsigned char EstateBook_ModelVersionString[] =
    "@(#)PROGRAM:EstateBook_Model  PROJECT:EstateBook-1\n";
constexpr double EstateBook_ModelVersionNumber = 1.0;
