#pragma once
// Stands in for the web player's registry until the embedded page exists: records each script
// the model sends.
#include "model/webplayerscripts.h"
#include <QStringList>

class RecordingWebPlayer final : public WebPlayerScripts
{
public:
    void evaluate(const QString &script) override { scripts.append(script); }
    QStringList scripts;
};
