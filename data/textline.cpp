// Line and text helpers shared by the element-set, modes and places readers.

#include "data/textline.h"

#include <cctype>
#include <cstring>

namespace veloran {

char* my_fgets(char* buf, int size, FILE* file) {
    if (buf == nullptr || size < 2 || file == nullptr) return nullptr;
    int used = 0;
    while (used < size - 1) {
        const int c = getc_unlocked(file);
        if (c == EOF) break;
        buf[used++] = static_cast<char>(c);
        if (c == '\n' || c == '\r') {
            buf[used] = '\0';
            return buf;
        }
    }
    buf[0] = '\0';
    return nullptr;
}

int MatchFileStr(FILE* file, const char* keyword) {
    if (file == nullptr || keyword == nullptr) return 0;
    const size_t length = std::strlen(keyword);
    size_t used = 0;
    bool same = true;
    while (used < length) {
        const int c = getc_unlocked(file);
        if (c == EOF) return 0;
        if (c != static_cast<unsigned char>(keyword[used])) same = false;
        ++used;
        if (c == '\n' || c == '\r') return 0;
    }
    return same ? 1 : 0;
}

int CleanUpLocationStr(char* text) {
    if (text == nullptr) return 0;
    size_t length = std::strcspn(text, "\r\n");
    text[length] = '\0';
    for (size_t i = 0; i < length; ++i)
        if (text[i] == '\t') text[i] = ' ';
    size_t start = 0;
    while (text[start] == ' ') ++start;
    while (length > start && text[length - 1] == ' ') --length;
    std::memmove(text, text + start, length - start);
    text[length - start] = '\0';
    return static_cast<int>(length - start);
}

int nonBlank(const char* text) {
    if (text == nullptr) return 0;
    for (; *text != '\0'; ++text)
        if (std::isalnum(static_cast<unsigned char>(*text))) return 1;
    return 0;
}

}  // namespace veloran
