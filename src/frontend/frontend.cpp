// The two global records. Plain storage, zero until main has read the configuration.
#include "frontend/frontend.h"

constinit EngineOptionsRecord EngineOptions{};
constinit TimeControlRecord TimeControl{};
