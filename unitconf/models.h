// The models of the family: which sections each of them has, in the order in which they are
// applied.
#pragma once

#include <cjson/cJSON.h>

#include <cstddef>

// When the progress message behind a section's place is sent. A section that is absent has its
// message all the same.
enum class Progress : unsigned char { none, with_parent, always };

struct SectionRow {
    const char* parent;  // the object that holds the key; null for the document itself
    const char* key;     // null for a place that has only its message
    void (*apply)(const cJSON* section);
    Progress progress;
};

// A run of sections; a model is a few of them, one behind the other.
struct SectionRun {
    const SectionRow* rows = nullptr;
    size_t count = 0;

    constexpr SectionRun() = default;
    template <size_t row_count>
    constexpr SectionRun(const SectionRow (&all)[row_count]) : rows(all), count(row_count) {}
};

struct ModelSections {
    SectionRun runs[4];
};

// Each stands by itself, so that a program has the sections of its own model and no others.
extern const ModelSections usbc_encoder_sections;
extern const ModelSections hdmi_encoder_sections;
extern const ModelSections decoder_sections;
extern const ModelSections unknown_model_sections;

// Model names are compared over 16 characters, so that a longer text which begins with the model
// passes.
constexpr bool same_model(const char* a, const char* b) {
    for (size_t i = 0; i < 16; i++) {
        if (a[i] != b[i] || a[i] == '\0') {
            return a[i] == b[i];
        }
    }
    return true;
}

// The sections of the model of that name; those that all models share when it is none of the
// family.
constexpr const ModelSections& sections_of_model(const char* name) {
    return same_model(name, "ZAVO-ENC-U300-DA")   ? usbc_encoder_sections
           : same_model(name, "ZAVO-ENC-E100-DA") ? hdmi_encoder_sections
           : same_model(name, "ZAVO-DEC-D200-DA") ? decoder_sections
                                                  : unknown_model_sections;
}

// Applies the configuration `text` with these sections if it was made for the model of that name.
// Returns a ConfigurationResult.
int apply_configuration(const char* model, const ModelSections& sections, const char* text);
