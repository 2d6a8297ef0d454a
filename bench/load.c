/* kxstr_load ROW ROUNDS LOADED NAME LIBRARY SYMBOL [NAME LIBRARY SYMBOL]...: the time to load a library, find a symbol
 * and unload it again, each time in a process that has nothing but libc and, unless it is "-", the library LOADED. The
 * libraries take turns. The output is as Google Benchmark's, so that bench/table.py reads both. */
#define _GNU_SOURCE /* NOLINT(bugprone-reserved-identifier,cert-*): glibc asks for it */
#include <dlfcn.h>
#include <link.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static double nanoseconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)now.tv_sec * 1e9 + (double)now.tv_nsec;
}

/* The path of a library that goes by its bare name, so that the search for it is not timed. */
static char *path_of(const char *library) {
    struct link_map *map = NULL;
    void *handle;
    char *path;
    if (strchr(library, '/') != NULL) return realpath(library, NULL);
    handle = dlopen(library, RTLD_NOW);
    if (handle == NULL || dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0) return NULL;
    path = strdup(map->l_name);
    dlclose(handle);
    return path;
}

/* Negative when the library or the symbol is not there. */
static double time_to_load(const char *path, const char *symbol) {
    const double start = nanoseconds();
    void *handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (handle == NULL || dlsym(handle, symbol) == NULL) return -1;
    dlclose(handle);
    return nanoseconds() - start;
}

static double time_in_a_child(const char *loaded, const char *path, const char *symbol) {
    int ends[2];
    double time = -1;
    pid_t child;
    if (pipe(ends) != 0) return -1;
    child = fork();
    if (child == 0) {
        if (strcmp(loaded, "-") == 0 || dlopen(loaded, RTLD_NOW) != NULL) time = time_to_load(path, symbol);
        _exit(write(ends[1], &time, sizeof time) == sizeof time ? 0 : 1);
    }
    close(ends[1]);
    if (child < 0 || read(ends[0], &time, sizeof time) != sizeof time) time = -1;
    close(ends[0]);
    if (child > 0) waitpid(child, NULL, 0);
    return time;
}

int main(int argc, char **argv) {
    enum { kFirst = 4, kEach = 3 };
    const char *separator = "";
    int round, i, rounds;
    char **paths;
    if (argc < kFirst + kEach) return 2;
    rounds = (int)strtol(argv[2], NULL, 10);
    paths = calloc((size_t)argc, sizeof *paths);
    if (paths == NULL) return 1;
    for (i = kFirst; i + 2 < argc; i += kEach) {
        paths[i] = path_of(argv[i + 1]);
        if (paths[i] == NULL) {
            fprintf(stderr, "kxstr_load: no %s\n", argv[i + 1]);
            return 1;
        }
    }
    puts("{\"benchmarks\": [");
    for (round = 0; round < rounds; ++round) {
        for (i = kFirst; i + 2 < argc; i += kEach) {
            const double time = time_in_a_child(argv[3], paths[i], argv[i + 2]);
            if (time < 0) {
                fprintf(stderr, "kxstr_load: %s does not load with %s\n", paths[i], argv[i + 2]);
                return 1;
            }
            printf("%s{\"name\": \"%s/%s\", \"run_type\": \"iteration\", \"cpu_time\": %.0f, \"time_unit\": \"ns\"}",
                   separator, argv[1], argv[i], time);
            separator = ",\n";
        }
    }
    puts("]}");
    return 0;
}
