// The one thing in which the programs of two models differ; the build names the model.
#include "unitconf/configuration.h"

const char unit_model[] = UNIT_MODEL;

int apply_unit_configuration(const char* text) {
    return apply_configuration_to_model(unit_model, text);
}
