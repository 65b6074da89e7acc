// The one thing in which the programs of two models differ; the build names the model.
#include "unitconf/configuration.h"
#include "unitconf/models.h"

const char unit_model[] = UNIT_MODEL;

// Chosen while compiling, so that the linker leaves the sections of other models out.
static constexpr const ModelSections& unit_sections = sections_of_model(UNIT_MODEL);

int apply_unit_configuration(const char* text) {
    return apply_configuration(unit_model, unit_sections, text);
}
