// A unit of any model, while a program is built for one.
#pragma once

#include "unitconf/models.h"

// Applies the configuration `text` to a unit of the model of that name. Returns a
// ConfigurationResult.
inline int apply_configuration_to_model(const char* model, const char* text) {
    return apply_configuration(model, sections_of_model(model), text);
}
