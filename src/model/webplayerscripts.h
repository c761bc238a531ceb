#pragma once
// Where the model sends transport commands while video-service content plays: the registry of
// the current web player evaluates them in its page, or drops them when there is no page.
#include <QString>

class WebPlayerScripts
{
public:
    virtual ~WebPlayerScripts() = default;
    virtual void evaluate(const QString &script) = 0;
};
