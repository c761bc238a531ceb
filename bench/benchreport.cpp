#include "benchreport.h"

#include <QFile>
#include <QJsonDocument>

#include <cstdio>
#include <cstring>

void BenchReport::add(const QString &key, double value, const QString &unit)
{
    m_figures.insert(
        key, QJsonObject {{QStringLiteral("value"), value}, {QStringLiteral("unit"), unit}});
    std::printf("%-12s %-34s %14.2f %s\n", qPrintable(m_name), qPrintable(key), value,
                qPrintable(unit));
    std::fflush(stdout);
}

void BenchReport::note(const QString &text)
{
    std::printf("%-12s %s\n", qPrintable(m_name), qPrintable(text));
    std::fflush(stdout);
}

bool BenchReport::write(const QString &path) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const QJsonObject root {{QStringLiteral("name"), m_name},
                            {QStringLiteral("figures"), m_figures}};
    return file.write(QJsonDocument(root).toJson()) > 0;
}

QString jsonPathFromArguments(int argc, char *argv[])
{
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--json") == 0)
            return QString::fromLocal8Bit(argv[i + 1]);
    }
    return {};
}
