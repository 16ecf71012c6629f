// Text that another process, or a file, had a say in.
#pragma once

#include <QByteArray>
#include <QString>

namespace viewer {

/// A line for people: UTF-8 without what steers a terminal, and cut where it never ends.
QString ToPlainLine(QByteArray const& text);

} // namespace viewer
