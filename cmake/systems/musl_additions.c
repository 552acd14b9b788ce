/* What libc++ was compiled to call, and musl does not have. */
#include <locale.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

int vasprintf(char** text, const char* format, va_list values);

int __vsnprintf_chk(char* text, size_t size, int flag, size_t known, const char* format, va_list values) {
  return vsnprintf(text, size, format, values);
}

int __vfprintf_chk(FILE* stream, int flag, const char* format, va_list values) {
  return vfprintf(stream, format, values);
}

int __vasprintf_chk(char** text, int flag, const char* format, va_list values) {
  return vasprintf(text, format, values);
}

long long strtoll_l(const char* text, char** end, int base, locale_t locale) { return strtoll(text, end, base); }

unsigned long long strtoull_l(const char* text, char** end, int base, locale_t locale) {
  return strtoull(text, end, base);
}

/* "Not found": the search for handlers of exceptions then goes another way. */
int _dl_find_object(void* address, void* result) { return -1; }
