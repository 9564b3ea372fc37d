// SPDX-License-Identifier: GPL-3.0-or-later
#include "resource/Resources.h"

#include <QDir>

// The toolkit's macro declares a function of the global namespace, so this one cannot live in any other.
void tzInitResources()
{
    Q_INIT_RESOURCE(tz_resource);
}
