#include "playernotifications.h"

PlayerNotifications &PlayerNotifications::shared()
{
    static PlayerNotifications notifications;
    return notifications;
}
