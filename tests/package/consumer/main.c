#include <kavio/kavio_c.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int main(void) {
    const char* question = "{\"op\":\"isLoggedIn\"}";
    char options[1000];
    kavio_session* session;
    char* line;
    snprintf(options, sizeof options, "{\"storeDir\":\"%s/c\"}", getenv("HOME"));
    if (kavio_create(options, &session, NULL) != KAVIO_OK) return 1;
    if (kavio_send(session, question, strlen(question)) != KAVIO_OK) return 1;
    if (kavio_receive(session, -1, &line, NULL) != KAVIO_OK) return 1;
    puts(line);
    kavio_free(line);
    kavio_destroy(session);
    return 0;
}
