/* The module kestrune-property-list.so: libplist behind one C call, so that
 * only the runs that read a property list load libplist and what it links. */

#include <plist/plist.h>

#include <stddef.h>
#include <stdint.h>

typedef void KestruneListTextSink(void *context, const char *text,
                                  size_t size);

/* Decodes the list of size bytes at bytes (XML or binary, at most 4 GiB) and
 * passes the string at key in its top dictionary to found, as libplist gives
 * it (it may hold NUL bytes). Returns 1 when found was called, else 0. */
__attribute__((visibility("default"))) int
kestruneReadListString(const char *bytes, size_t size, const char *key,
                       void *context, KestruneListTextSink *found) {
  if (size > UINT32_MAX)
    return 0;
  plist_t root = NULL;
  plist_from_memory(bytes, (uint32_t)size, &root);
  int read = 0;
  if (root && plist_get_node_type(root) == PLIST_DICT) {
    plist_t item = plist_dict_get_item(root, key);
    uint64_t length = 0;
    const char *value = NULL;
    if (item && plist_get_node_type(item) == PLIST_STRING)
      value = plist_get_string_ptr(item, &length);
    if (value) {
      found(context, value, (size_t)length);
      read = 1;
    }
  }
  if (root)
    plist_free(root);
  return read;
}
