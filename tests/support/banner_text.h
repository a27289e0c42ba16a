// banner_text.h -- what the tool prints first when no compiler package is
// found along PATH (as in every Scenario run that does not set PATH): the
// info line with an empty package text, the protection line and an empty
// line.
#ifndef VEMCOV_TESTS_SUPPORT_BANNER_TEXT_H
#define VEMCOV_TESTS_SUPPORT_BANNER_TEXT_H

#include <string>

namespace testsupport {

const std::string BANNER =
    "Tarsk(R) Compilers code-coverage tool for C, C++ and Fortran applications running on x86-64, "
    "Version 1.0 Build 20250107 \n"
    "Copyright (C) 2025 Tarsk Compilers. All rights reserved.\n\n";

}  // namespace testsupport

#endif
