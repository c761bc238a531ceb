#include "facesprogram.h"

#include "surface/facedetectors.h"

#include <QCoreApplication>
#include <QDir>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include <unistd.h>

int runFacesProgram(const QStringList &arguments)
{
    const QDir programs(QCoreApplication::applicationDirPath());
    const QByteArray program
        = QFile::encodeName(programs.absoluteFilePath(QStringLiteral(LUMO_FACES_PROGRAM)));
    // The models are installed beside lumo-cli's folder, not the helper's.
    if (qEnvironmentVariableIsEmpty(FaceDetectors::modelDirectoryVariable)) {
        qputenv(FaceDetectors::modelDirectoryVariable,
                QFile::encodeName(FaceDetectors::modelDirectoryBeside(programs.path())));
    }
    std::vector<QByteArray> owned {program};
    for (const QString &argument : arguments)
        owned.push_back(QFile::encodeName(argument));
    std::vector<char *> argv;
    for (QByteArray &argument : owned)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    std::fflush(stdout);
    execv(program.constData(), argv.data());
    std::fprintf(stderr, "lumo-cli: cannot start %s: %s\n", program.constData(),
                 std::strerror(errno));
    return 1;
}
