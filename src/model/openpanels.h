#pragma once
// The open panels of the model, described as values; the window shows them with the
// platform's file dialog through a FileChooser.
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

struct OpenPanelRequest
{
    QString title;
    QString confirmLabel; // empty: the dialog's own word
    // Name filters such as "M3U Playlist (*.m3u)"; the first one is selected.
    QStringList nameFilters;
};

// Shows an open panel for one file, no folders; the chosen local path, or nothing if cancelled.
using FileChooser = std::function<std::optional<QString>(const OpenPanelRequest &)>;

namespace OpenPanels {
// The 18 media file extensions a user may pick, in order.
const QStringList &mediaExtensions();
OpenPanelRequest chooseMedia();
OpenPanelRequest importPlaylist();
// The subtitle file types added to a playing video, in order.
const QStringList &subtitleExtensions();
OpenPanelRequest loadSubtitles();
OpenPanelRequest openGuide();
} // namespace OpenPanels
