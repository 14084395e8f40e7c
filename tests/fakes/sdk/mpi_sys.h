/* A vendor's header in all that matters to a build that is told where to find it. */
#include "backend/hisi_sdk_declarations.h"
