// lumo-cli-faces: the faces smart reframe finds in pictures, for `lumo-cli faces`.

#include "facescommand.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    return runFacesCommand(app.arguments().mid(1));
}
