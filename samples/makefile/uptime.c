/* Answers every request with how long it has been running. */
#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

static void answer(int client, long seconds) {
    char request[4096];
    char page[256];
    char reply[512];
    if (read(client, request, sizeof request) <= 0) {
        return;
    }
    int length = snprintf(page, sizeof page,
                          "<!doctype html><title>Uptime</title><h1>Up for %ld min %ld s</h1>\n", seconds / 60, seconds % 60);
    int size = snprintf(reply, sizeof reply,
                        "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: %d\r\nConnection: close\r\n\r\n%s",
                        length, page);
    if (write(client, reply, (size_t)size) != size) {
        perror("write");
    }
}

int main(void) {
    const char *chosen = getenv("PORT");
    int port = chosen != NULL ? atoi(chosen) : 8300;
    int yes = 1;
    struct sockaddr_in address;
    memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_port = htons((unsigned short)port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);

    signal(SIGPIPE, SIG_IGN);
    int listener = socket(AF_INET, SOCK_STREAM, 0);
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (listener < 0 || bind(listener, (struct sockaddr *)&address, sizeof address) != 0 || listen(listener, 16) != 0) {
        perror("listen");
        return 1;
    }
    printf("Listening on http://localhost:%d\n", port);
    fflush(stdout);

    time_t start = time(NULL);
    for (;;) {
        int client = accept(listener, NULL, NULL);
        if (client < 0) {
            continue;
        }
        answer(client, (long)(time(NULL) - start));
        close(client);
    }
}
