// Replacing, and cutting.
#include "PlainText.h"

#include <algorithm>

namespace viewer {

QString ToPlainLine(QByteArray const& text) {
    constexpr qsizetype longest = 300; // characters
    QString line = QString::fromUtf8(text.left(4 * longest)).simplified();
    std::ranges::replace_if(line, [](QChar character) { return !character.isPrint(); }, u'?');
    return line.size() <= longest ? line : line.left(longest - 1) + u'…';
}

} // namespace viewer
