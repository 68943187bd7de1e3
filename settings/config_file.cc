#include "settings/config_file.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "lib/exit_status.h"
#include "lib/mstr.h"
#include "lib/report_error.h"

namespace zelta {

config_table ip_config;
config_table if_config;

namespace {

// Splits the line into the entry; false when there is no memory for it.
bool store_entry(config_pair &entry, mstr *line, mstr *key, mstr *value) {
    if (mstr_partition_cstr(key, line, "=") < 0 || mstr_partition_cstr(value, line, "\n") < 0)
        return false;
    char *key_copy = strdup(mstr_get(key));
    char *value_copy = strdup(mstr_get(value));
    if (key_copy != nullptr && value_copy != nullptr) {
        entry = {.key = key_copy, .value = value_copy};
        return true;
    }
    free(key_copy);
    free(value_copy);
    return false;
}

} // namespace

int parse_config_file(const char *path, config_table &table) {
    FILE *file = fopen(path, "re");
    if (file == nullptr) {
        report_error("Open failed\n");
        return exit_no_file;
    }
    mstr line = {.magic = MSTR_MAGIC_HEAP};
    mstr key = {.magic = MSTR_MAGIC_HEAP};
    mstr value = {.magic = MSTR_MAGIC_HEAP};
    size_t stored = 0;
    while (mstr_getline(&line, file) == 0 && stored < config_pairs &&
           store_entry(table[stored], &line, &key, &value))
        stored++;
    if (stored < config_pairs)
        table[stored].key = nullptr;
    mstr_destroy(&line);
    mstr_destroy(&key);
    mstr_destroy(&value);
    fclose(file);
    puts("NEW parse_config_file() FUNCTION success!!");
    return exit_ok;
}

const char *config_lookup(const config_table &table, const char *key) {
    for (const config_pair &pair : table) {
        if (pair.key == nullptr)
            break;
        if (strcmp(pair.key, key) == 0)
            return pair.value;
    }
    return nullptr;
}

} // namespace zelta
