#include "unitconf/document.h"

static cJSON* document;

cJSON* parse_document(const char* text) {
    cJSON_Delete(document);
    document = cJSON_Parse(text);
    return document;
}
