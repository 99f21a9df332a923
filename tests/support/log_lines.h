// SPDX-License-Identifier: MIT
//
// Takes written lines apart and compares them with expected ones. Used by LogCapture.

#ifndef VORNJSONDB_TESTS_LOG_LINES_H
#define VORNJSONDB_TESTS_LOG_LINES_H

#include <string>
#include <vector>

#include "log_capture.h"

namespace support
{

std::vector<LogLine> parseStandardOutput(const std::string& text);
LogLine parseSyslogCall(const SyslogCall& call);

// A readable difference, or an empty text when the lines are as expected under the current blDebugOutput.
std::string compareLines(const ExpectedLines& expected, const std::vector<LogLine>& written);

}  // namespace support

#endif  // VORNJSONDB_TESTS_LOG_LINES_H
