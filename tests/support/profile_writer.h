// profile_writer.h -- the product's profile writer, under the test support's
// namespace: tests write testsupport::Project, testsupport::DpiBytes and so
// on.
#ifndef VEMCOV_TESTS_SUPPORT_PROFILE_WRITER_H
#define VEMCOV_TESTS_SUPPORT_PROFILE_WRITER_H

#include "import/profile_writer.h"

namespace testsupport {
using namespace vemtra_writer;
}

#endif
