// Where the uploaded file stands in the body of a request.
#pragma once

#include <cstddef>

// A piece of the request; `begin` is null when there is none.
struct Content {
    const char* begin;
    size_t length;
};

// The content of the uploaded file in a text of `length` bytes. Its start is looked for by the
// headers that browsers write, over the whole text and not from the form field on; a text without
// headers is content from its first byte. Its end is the first line end with four hyphens behind
// it, the delimiter's two and those that every browser's boundary begins with, or the end of the
// text. Of a content of more than `most` bytes only that is known: it has a length above `most`.
// None when the headers do not end, or not as those of a part of type multipart/form-data must.
Content find_content(const char* text, size_t length, size_t most);
