// banner_text.h -- the banner as the tool prints it when no compiler package
// is found along PATH, and the environment that makes sure none is.
#ifndef VEMCOV_TESTS_SUPPORT_BANNER_TEXT_H
#define VEMCOV_TESTS_SUPPORT_BANNER_TEXT_H

#include <map>
#include <string>

namespace testsupport {

// The info line (with an empty package text) and the protection line.
const std::string BANNER_LINES =
    "Tarsk(R) Compilers code-coverage tool for C, C++ and Fortran applications running on x86-64, "
    "Version 1.0 Build 20250107 \n"
    "Copyright (C) 2025 Tarsk Compilers. All rights reserved.\n";

// A PATH without compiler drivers, for runs whose banner is compared.
const std::map<std::string, std::string> NO_PACKAGE_ENV = {{"PATH", "/nonexistent"}};

}  // namespace testsupport

#endif
