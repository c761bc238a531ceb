#pragma once
// The GET requests the player makes (playlists, guides) and the words for their failures. Kept
// apart from the downloads themselves so that lumo-cli links only what it uses.
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QString>
#include <QUrl>

// What a failed download is called, in the words the user sees.
QString networkErrorDescription(QNetworkReply::NetworkError error, const QString &fallback);
QString downloadTimedOutDescription();
// A GET as the player makes them: from the network, following safe redirects, ten at most.
QNetworkRequest downloadRequest(const QUrl &url);
