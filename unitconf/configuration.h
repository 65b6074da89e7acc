// A whole unit configuration: one JSON document that describes every setting of a unit.
#pragma once

// What became of a configuration.
enum ConfigurationResult : int {
    configuration_applied = 1,   // the whole sequence has run; the unit is rebooting
    configuration_not_json = 2,  // these three leave the unit unchanged
    configuration_without_model = 3,
    configuration_for_other_model = 4,
};

// The model this program is built for, such as "ZAVO-ENC-U300-DA".
extern const char unit_model[];

// Applies the document to the unit if it was made for the unit's model: the identity, then every
// section that is there, in the fixed order of the model, with a progress message to the local
// status service after each step; then saves the parameter store, waits 1 second and starts the
// reboot. Takes minutes for a full document. `text` is NUL-terminated. Returns a
// ConfigurationResult.
int apply_unit_configuration(const char* text);

// Sends one progress message, "upgradeUnitSetting:<step>,<total>", to the local status service at
// TCP 127.0.0.1:4445. Nothing is read back.
void report_progress(int step, int total);
