// Names reduced to what host names and Dante channels accept.
#pragma once

#include <cstddef>

// The characters of a UTF-8 text: every byte that does not continue one counts.
size_t utf8_characters(const char* text);

// A copy of the first `bytes` bytes of `name` in which ASCII letters, digits and "-" stand as they
// are, a blank becomes `blank`, and every other byte becomes the capital letter O. Allocated, freed
// by the caller; null when memory runs out. `name` has at least that many bytes.
char* plain_name(const char* name, size_t bytes, char blank);

// The positions of the name synchronisation flags, the characters of the parameter
// "device_name_sync_enable": what follows the device name where the character is "1".
enum NameSyncFlag : unsigned char {
    sync_tx_channel_1 = 0,
    sync_tx_channel_2 = 1,
    sync_host_name = 2,
    sync_rx_channel_1 = 3,
    sync_rx_channel_2 = 4,
    sync_dante_device_name = 5,
};

// Sets one flag in the text that the unit holds now and stores the text. The character is put in
// its place: at the end of the present text it lengthens it by one, behind the end it does not
// show, and the text is stored as it then stands.
void store_name_sync_flag(NameSyncFlag flag, bool on);
