#pragma once
// What a command-line argument asks the player to open: a local file, or an address to open as
// if typed into the address field.
#include <QDir>
#include <QString>
#include <QUrl>
#include <variant>

struct LaunchFile
{
    QUrl url;
    QString name;
    friend bool operator==(const LaunchFile &, const LaunchFile &) = default;
};
struct LaunchAddress
{
    QString text;
    friend bool operator==(const LaunchAddress &, const LaunchAddress &) = default;
};
using LaunchRequest = std::variant<LaunchFile, LaunchAddress>;

// An argument with a scheme ("http://...", "file:///...") is an address, except file: URLs,
// which are files; anything else is a path, relative to workingDirectory.
LaunchRequest launchRequest(const QString &argument, const QDir &workingDirectory);
