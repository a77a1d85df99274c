// The application's own texts in the user's language.
#pragma once

#include "app/shared/LocalizedText.h"
