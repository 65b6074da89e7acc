// The video engine option, "v_eng_drv_option": a text of "0x" and eight hexadecimal digits whose
// bits hold the latency flag and the encryption strength.
#pragma once

#include <cstddef>

// Gives the short forms that the store may hold their full length, in place: "0x8" becomes
// "0x80000000", "0x0" and the empty text become "0x00000000"; any other text stays as it is.
// `option` has room for 11 bytes at least.
void normalise_video_engine_option(char* option);

// Makes the option that has `digit` at `place` of the present one, counted from 0, and all else as
// it is, in `option` (1024 bytes). The present text is given its full length first. The digit is
// put in its place whatever text the unit holds: at the text's end it lengthens it by one, behind
// its end it does not show.
void change_video_engine_option(char* option, const char* present, size_t place, char digit);
