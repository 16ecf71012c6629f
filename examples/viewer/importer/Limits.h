// What an import may use up: files may claim to hold anything, and never come to an end.
#pragma once

#include <QtGlobal>

namespace viewer {

/// Memory, and room on the disk. An allocation beyond it fails, and so does writing.
void LimitMemory(qint64 fileSize);

/// CPU time. When it is over the process says so on the standard error and ends with 1.
void LimitTime(unsigned seconds);

} // namespace viewer
