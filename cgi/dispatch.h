// What one upload is and what becomes of it.
#pragma once

#include <cstddef>

// Deals with one request of `size` bytes: the body of a POST (multipart/form-data), or the query
// string of a GET; nothing behind its first NUL is seen. Recognises the kind of the upload by its
// form field, cuts the content of the file out of the body (at most 1,048,575 bytes; 512,000 for
// the RS-232, IR, video-wall and EDID kinds), hands it to the kind's handler, and prints one JSON
// object without a line feed on standard output. Nothing is printed for a body whose content has
// no start (see find_content) and for a result that the kind has no reply for.
void dispatch_upload(const char* request, size_t size);
