#pragma once

// Collects a benchmark's figures, prints them as they come and writes them as one JSON file.

#include <QJsonObject>
#include <QString>

class BenchReport
{
public:
    explicit BenchReport(QString name)
        : m_name(std::move(name))
    { }

    void add(const QString &key, double value, const QString &unit);
    void note(const QString &text);
    // Writes {"name", "figures": {key: {"value", "unit"}}} to path; false when it cannot.
    bool write(const QString &path) const;

private:
    QString m_name;
    QJsonObject m_figures;
};

// The path after --json in the arguments, or empty.
QString jsonPathFromArguments(int argc, char *argv[]);
