// Mouse roaming: one mouse and keyboard that move over the screens of a grid of units.
#pragma once

// Puts the grid positions of a layout into the unit's roaming map. `layout` is the grid as a
// document gives it, "<address>,<column>,<row>" for each unit with ":" between them, of which at
// most 4095 bytes are read. Its first entry must hold the text "0,0".
//
// Each address is resolved to the MAC address of the unit there. In /var/tmp/roaming_file every
// entry that holds one of these gets the unit's column and row in the two fields behind it; the
// result replaces that file and /user_data2/roaming_file, each as a whole and each even if the
// other cannot be replaced. Only the unit at the grid's origin does so.
//
// Nothing is written when the layout is empty, names more than 18 units or has an entry of 100
// bytes or more, when a column or row is not a number from 0 to 16 in digits, when an address
// cannot be resolved, when the first entry does not hold "0,0", when no unit or another one is at
// 0,0, or when there is no map.
void update_roaming_layout(const char* layout);
