#pragma once
#include <QStringList>

// lumo-cli faces IMAGE...: the faces smart reframe finds in each image, one JSON line per image.
int runFacesCommand(const QStringList &arguments);
