/* What libc++ and the unwinder were compiled to call, and musl does not have. */
#define _GNU_SOURCE
#include <link.h>
#include <locale.h>
#include <pthread.h>
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

/* The unwinder calls these without asking for them. */
void* const called_by_the_unwinder[] = {pthread_once, pthread_key_create, pthread_getspecific, pthread_setspecific,
                                        pthread_mutex_lock, pthread_mutex_unlock};

/* Where the frames of a program are described, which the search for handlers of exceptions asks for. */
struct dl_find_object {
  unsigned long long flags;
  void *map_start, *map_end;
  struct link_map* link_map;
  void* eh_frame;
};

static int find_frames(struct dl_phdr_info* program, size_t size, void* result) {
  struct dl_find_object* found = result;
  for (int k = 0; k < program->dlpi_phnum; ++k) {
    if (program->dlpi_phdr[k].p_type != PT_GNU_EH_FRAME) continue;
    found->eh_frame = (void*)(program->dlpi_addr + program->dlpi_phdr[k].p_vaddr);
    return 1;
  }
  return 0;
}

/* All is in one object: the program. */
int _dl_find_object(void* address, struct dl_find_object* result) {
  result->flags = 0;
  result->map_start = 0;
  result->map_end = (void*)-1;
  result->link_map = 0;
  return dl_iterate_phdr(find_frames, result) == 1 ? 0 : -1;
}
