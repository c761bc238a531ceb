#pragma once
// Whether the platform lets this application capture the screen and the system sound. Linux
// asks nothing of the user, so it is granted there; platforms that ask implement the two calls.
#include <memory>

class ScreenCapturePermission
{
public:
    virtual ~ScreenCapturePermission() = default;

    // True when access is already granted; never asks the user.
    virtual bool preflight() = 0;
    // Asks the user when the platform does; true when granted.
    virtual bool request() = 0;
    // Whether the user can refuse it at all; where not, no failure is read as a refusal.
    virtual bool canBeRefused() const = 0;

    // The permission of the platform this runs on.
    static std::shared_ptr<ScreenCapturePermission> platform();
};
