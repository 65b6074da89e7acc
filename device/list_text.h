// The text of the stored lists (RS-232, IR and trigger commands): one line of JSON in which every
// double quote is written as the three letters TAG, so that it can stand in a shell line. It is
// valid JSON again only when each TAG is turned back into a double quote.
#pragma once

// What becomes of carriage returns, line feeds and horizontal tabs.
enum class LineBreaks : unsigned char { keep, drop };

// The stored form of a JSON text. Allocated, freed by the caller; null when memory runs out.
char* encode_list_text(const char* json, LineBreaks line_breaks);

// The JSON text of a stored form: every TAG becomes a double quote. Allocated, freed by the caller;
// null when memory runs out.
char* decode_list_text(const char* stored, LineBreaks line_breaks);
