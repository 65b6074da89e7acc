// The unit's present settings, taken from the dumps of its two parameter stores: one array of value
// slots whose fixed numbers each name one parameter.
#pragma once

#include "device/unit.h"

inline constexpr int snapshot_slots = 200;

// 200 texts of at most 1023 bytes, NUL-terminated; a slot without a value is empty.
struct ParameterSnapshot {
    char value[snapshot_slots][output_text_size];
};

// The slots that the appliers read, named after the parameter.
enum SnapshotSlot : int {
    slot_as_source = 22,
    slot_a_a_audio_direction = 24,
    slot_device_name = 39,
    slot_a_addon = 46,
    slot_v_eng_drv_option = 47,
    slot_s0_baudrate = 79,
    slot_device_name_sync_enable = 82,
    slot_vw_var_ver = 139,
    slot_vw_moninfo_ha = 141,
    slot_vw_moninfo_ht = 142,
    slot_vw_moninfo_va = 143,
    slot_vw_moninfo_vt = 144,
    slot_vw_rotate = 145,
    slot_vw_stretch_type = 146,
    slot_vw_max_row = 147,
    slot_vw_max_column = 148,
    slot_vw_row = 149,
    slot_vw_column = 150,
    slot_vw_v2_x1 = 151,
    slot_vw_v2_y1 = 152,
    slot_vw_v2_x2 = 153,
    slot_vw_v2_y2 = 154,
    slot_dante_op_mode = 165,
    slot_lm_ss_stream_option = 184,
    slot_rw_ss_stream_option = 187,
};

// Fills the slots that have a key in the run-time store, from a copy of /dev/shm/rwparam that a
// shell line makes first so that the services can go on writing. A key that the store does not hold
// empties its slot; a store that cannot be read leaves all slots as they are.
void load_rw_snapshot(ParameterSnapshot* snapshot);

// The same for the live store's dump, /var/tmp/lmparam_dump, read in place. Slots 43, 79 and 155
// are named by both stores and end up with the live store's value when this runs second, as it
// must.
void load_lm_snapshot(ParameterSnapshot* snapshot);

// Clears all slots, then fills them from the run-time store and from the live store.
void take_snapshot(ParameterSnapshot* snapshot);
