#include "programmetext.h"

#include "sources/displaytext.h"

#include <QDateTime>
#include <algorithm>

namespace ProgrammeText {

QString line(const ProgrammeGuide::Programme &programme)
{
    const auto clock = [](qint64 seconds) {
        return QDateTime::fromSecsSinceEpoch(seconds).toString(QStringLiteral("HH:mm"));
    };
    return clock(programme.start) + u'–' + clock(programme.stop) + QStringLiteral("  ")
        + DisplayText::clean(programme.title);
}

double progress(const ProgrammeGuide::Programme &programme, qint64 moment)
{
    const qint64 length = programme.stop - programme.start;
    if (length <= 0)
        return 0;
    return std::clamp(double(moment - programme.start) / double(length), 0.0, 1.0);
}

} // namespace ProgrammeText
