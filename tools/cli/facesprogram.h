#pragma once
#include <QStringList>

// lumo-cli faces IMAGE...: hands the command over to lumo-cli-faces, the program that holds the
// face detection. It is a program of its own so that lumo-cli's other commands start without
// loading OpenCV and Qt's graphics, which take longer to load than a large list takes to count.
// Returns only when the program cannot be started.
int runFacesProgram(const QStringList &arguments);
