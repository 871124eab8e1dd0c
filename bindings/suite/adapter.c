/* The suite's adapter for C: reads what to do from standard input, as bindings/suite/run says. */
#include <kavio/kavio_c.h>

#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static kavio_session* session = NULL;

static void show(char* line) {
    puts(line);
    fflush(stdout);
    kavio_free(line);
}

static void obey(const char* text) {
    char* error;
    if (text[0] == '+' && kavio_create(text + 1, &session, &error) == KAVIO_FAILED) {
        show(error);
    } else if (text[0] == '>' && session != NULL) {
        kavio_send(session, text + 1, strlen(text + 1));
    } else if (text[0] == '-') {
        kavio_destroy(session);
        session = NULL;
    }
}

/* Reads what there is, and obeys each line that is complete; 0 at the end of input. */
static int read_input(void) {
    static char* buffer = NULL;
    static size_t size = 0, used = 0;
    ssize_t count;
    char* end;
    if (size - used < 4096) {
        size = 2 * size + 8192;
        buffer = realloc(buffer, size);
        if (buffer == NULL) abort();
    }
    count = read(STDIN_FILENO, buffer + used, size - used);
    if (count <= 0) {
        free(buffer);
        return 0;
    }
    used += (size_t)count;
    while ((end = memchr(buffer, '\n', used)) != NULL) {
        *end = '\0';
        obey(buffer);
        used -= (size_t)(end + 1 - buffer);
        memmove(buffer, end + 1, used);
    }
    return 1;
}

int main(void) {
    if (kavio_abi() != KAVIO_ABI) return 1;
    for (;;) {
        struct pollfd entries[2];
        char* line;
        entries[0].fd = STDIN_FILENO;
        entries[0].events = POLLIN;
        entries[1].fd = kavio_descriptor(session); /* poll ignores -1 */
        entries[1].events = POLLIN;
        if (poll(entries, 2, -1) < 0) return 1;
        while (session != NULL && kavio_receive(session, 0, &line, NULL) == KAVIO_OK) show(line);
        if (entries[0].revents != 0 && !read_input()) break;
    }
    kavio_destroy(session);
    return 0;
}
