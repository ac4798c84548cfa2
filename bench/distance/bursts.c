/*
 * Lists a mailbox with as few waits as POP3 allows, and nothing around it: what the program's windows are compared
 * with.
 *
 *     bench_pop3_bursts <address> <port> <user> <password>
 *
 * Name and password each have to wait for a reply, STAT tells the number of messages, and then LIST n and TOP n 25 of
 * all messages go out at once, and UIDL behind them; QUIT is the last.
 */

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

static char received[65536];
static size_t held, used;
static long long bytes;

static void fail(const char* what) {
    perror(what);
    exit(1);
}

static double now(clockid_t clock) {
    struct timespec time;
    clock_gettime(clock, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

/* What still has to be sent; it goes out while replies are read, so that neither side waits for the other. */
static char *unsent, *unsent_end;

static void fill(int connection) {
    struct pollfd wait = {connection, POLLIN, 0};
    if (unsent != unsent_end) {
        wait.events |= POLLOUT;
    }
    if (poll(&wait, 1, 20000) <= 0) {
        fail("silence");
    }
    if (wait.revents & POLLOUT) {
        const ssize_t sent = send(connection, unsent, (size_t)(unsent_end - unsent), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0) {
            unsent += sent;
        }
    }
    if (wait.revents & (POLLIN | POLLHUP | POLLERR)) {
        const ssize_t got = recv(connection, received, sizeof received, 0);
        if (got <= 0) {
            fail("lost");
        }
        const int on = 1;
        setsockopt(connection, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
        held = (size_t)got;
        used = 0;
        bytes += got;
    }
}

/* Reads one line into the buffer, without its end. */
static void read_line(int connection, char* line, size_t size) {
    size_t length = 0;
    for (;;) {
        while (used == held) {
            fill(connection);
        }
        const char letter = received[used++];
        if (letter == '\n') {
            break;
        }
        if (length + 1 < size && letter != '\r') {
            line[length++] = letter;
        }
    }
    line[length] = 0;
}

static void expect_ok(int connection, char* line, size_t size) {
    read_line(connection, line, size);
    if (strncmp(line, "+OK", 3) != 0) {
        fprintf(stderr, "bench_pop3_bursts: %s\n", line);
        exit(1);
    }
}

static void read_to_dot(int connection, char* line, size_t size) {
    do {
        read_line(connection, line, size);
    } while (strcmp(line, ".") != 0);
}

static void say(char* text) {
    unsent = text;
    unsent_end = text + strlen(text);
}

int main(int count, char** arguments) {
    if (count != 5) {
        fputs("usage: bench_pop3_bursts <address> <port> <user> <password>\n", stderr);
        return 2;
    }
    const double start = now(CLOCK_MONOTONIC), work = now(CLOCK_PROCESS_CPUTIME_ID);
    struct sockaddr_in address = {.sin_family = AF_INET, .sin_port = htons((unsigned short)atoi(arguments[2]))};
    inet_pton(AF_INET, arguments[1], &address.sin_addr);
    const int connection = socket(AF_INET, SOCK_STREAM, 0);
    const int room = 208 * 1024, on = 1;
    setsockopt(connection, SOL_SOCKET, SO_RCVBUF, &room, sizeof room);
    if (connect(connection, (struct sockaddr*)&address, sizeof address) != 0) {
        fail("connect");
    }
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);

    char line[2048], command[600];
    expect_ok(connection, line, sizeof line);
    snprintf(command, sizeof command, "USER %s\r\n", arguments[3]);
    say(command);
    expect_ok(connection, line, sizeof line);
    snprintf(command, sizeof command, "PASS %s\r\n", arguments[4]);
    say(command);
    expect_ok(connection, line, sizeof line);
    say("STAT\r\n");
    expect_ok(connection, line, sizeof line);
    const int messages = atoi(line + 4);

    char* const burst = malloc((size_t)messages * 64 + 16);
    char* end = burst;
    *burst = 0;
    for (int number = 1; number <= messages; ++number) {
        end += sprintf(end, "LIST %d\r\nTOP %d 25\r\n", number, number);
    }
    sprintf(end, "UIDL\r\n");
    say(burst);
    for (int number = 1; number <= messages; ++number) {
        expect_ok(connection, line, sizeof line);
        expect_ok(connection, line, sizeof line);
        read_to_dot(connection, line, sizeof line);
    }
    expect_ok(connection, line, sizeof line);
    read_to_dot(connection, line, sizeof line);
    free(burst);
    say("QUIT\r\n");
    expect_ok(connection, line, sizeof line);
    close(connection);
    printf("seconds %f processor %f messages %d bytes %lld\n", now(CLOCK_MONOTONIC) - start,
           now(CLOCK_PROCESS_CPUTIME_ID) - work, messages, bytes);
    return 0;
}
