#include "recordingnames.h"

#include "model/openpanels.h"

#include <QFileInfo>

#include <cmath>

namespace RecordingNames {

QString proposedFileName(PlayerRecordingQuality quality, const QDateTime &now)
{
    const QString qualityName
        = quality == PlayerRecordingQuality::hd ? QStringLiteral("HD") : QStringLiteral("Normal");
    return QStringLiteral("Lumo ") + qualityName + QStringLiteral(" Recording ")
        + now.toString(QStringLiteral("yyyy-MM-dd HH-mm-ss")) + QStringLiteral(".mp4");
}

QString formatDuration(double seconds)
{
    Q_ASSERT(std::isfinite(seconds));
    const auto whole = static_cast<long long>(std::trunc(seconds));
    return QString::asprintf("%02lld:%02lld", whole / 60, whole % 60);
}

QString panelText(double seconds)
{
    return QStringLiteral("REC  ") + formatDuration(seconds);
}

qint64 averageBitRate(int width, int height)
{
    const qint64 product = qint64(width) * qint64(height) * 6;
    return std::max<qint64>(product, 4'000'000);
}

} // namespace RecordingNames

QString RecordingNames::mp4Path(const QString &chosen)
{
    const QFileInfo file(chosen);
    const QString suffix = file.suffix().toLower();
    if (suffix == u"mp4")
        return chosen;
    const bool filmType = !file.completeBaseName().isEmpty()
        && (OpenPanels::mediaExtensions().contains(suffix) || suffix == u"mp4v" || suffix == u"qt");
    if (filmType)
        return chosen.first(chosen.size() - suffix.size()) + QStringLiteral("mp4");
    return chosen + QStringLiteral(".mp4");
}
