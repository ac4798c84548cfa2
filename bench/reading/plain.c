/*
 * The way from the server to the saved attachment without a mail program around it: reads the message from the
 * socket, writes the encoded attachment into a file, decodes that file into the target, and has the target on
 * the disk before it ends.
 *
 *     bench_reading_plain <port> <file>
 */

#define _GNU_SOURCE

#include <arpa/inet.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

static const char temporary[] = "encoded.tmp";
enum { piece_bytes = 1 << 16 };

static void must(int succeeded, const char *what) {
    if (!succeeded) {
        perror(what);
        exit(1);
    }
}

static double seconds(clockid_t clock) {
    struct timespec time;
    clock_gettime(clock, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

static int connected(const char *port) {
    struct sockaddr_in address = {.sin_family = AF_INET, .sin_addr.s_addr = htonl(INADDR_LOOPBACK)};
    address.sin_port = htons((unsigned short)atoi(port));
    const int server = socket(AF_INET, SOCK_STREAM, 0);
    must(server >= 0 && connect(server, (struct sockaddr *)&address, sizeof address) == 0, "connect");
    return server;
}

static void read_line(int server, char *line, size_t size) {
    size_t length = 0;
    while (length + 1 < size) {
        must(read(server, line + length, 1) == 1, "read");
        if (line[length++] == '\n') {
            break;
        }
    }
    line[length] = '\0';
}

static void command(int server, const char *text, char *answer, size_t size) {
    must(write(server, text, strlen(text)) == (ssize_t)strlen(text), "write");
    read_line(server, answer, size);
    must(strncmp(answer, "+OK", 3) == 0, "answer");
}

/* Reads up to the final dot and makes doubled dots single; returns the length of the message. */
static size_t receive(int server, char *message, size_t room) {
    size_t length = 0;
    while (length < 5 || memcmp(message + length - 5, "\r\n.\r\n", 5) != 0) {
        must(length < room, "room");
        const ssize_t count = read(server, message + length, room - length);
        must(count > 0, "read");
        length += (size_t)count;
    }
    length -= 3;
    char *to = message;
    const char *from = message;
    const char *const end = message + length;
    for (const char *dot; (dot = memmem(from, (size_t)(end - from), "\r\n.", 3)) != NULL; from = dot + 3) {
        memmove(to, from, (size_t)(dot + 2 - from));
        to += dot + 2 - from;
    }
    memmove(to, from, (size_t)(end - from));
    return (size_t)(to - message) + (size_t)(end - from);
}

/* The encoded text: what follows the blank line behind the attachment's name, up to the next boundary. */
static const char *attachment(const char *message, size_t length, size_t *size) {
    const char *const end = message + length;
    const char *at = memmem(message, length, "filename=", 9);
    must(at != NULL, "attachment");
    at = memmem(at, (size_t)(end - at), "\r\n\r\n", 4);
    must(at != NULL, "attachment");
    at += 4;
    const char *const boundary = memmem(at, (size_t)(end - at), "\r\n--", 4);
    must(boundary != NULL, "boundary");
    *size = (size_t)(boundary + 2 - at);
    return at;
}

static void write_all(int file, const char *bytes, size_t size) {
    while (size > 0) {
        const ssize_t written = write(file, bytes, size);
        must(written > 0, "write");
        bytes += written;
        size -= (size_t)written;
    }
}

static void fill(signed char values[256]) {
    const char *const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    memset(values, -1, 256);
    for (signed char value = 0; value < 64; ++value) {
        values[(unsigned char)alphabet[value]] = value;
    }
}

static void decode(const char *path) {
    static char text[piece_bytes];
    static char bytes[piece_bytes];
    signed char values[256];
    fill(values);
    const int source = open(temporary, O_RDONLY);
    const int target = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    must(source >= 0 && target >= 0, "open");
    unsigned bits = 0;
    int characters = 0;
    for (ssize_t count; (count = read(source, text, sizeof text)) > 0;) {
        char *out = bytes;
        for (ssize_t i = 0; i < count; ++i) {
            const signed char value = values[(unsigned char)text[i]];
            if (value < 0) {
                continue;
            }
            bits = bits << 6 | (unsigned)value;
            if (++characters == 4) {
                *out++ = (char)(bits >> 16);
                *out++ = (char)(bits >> 8);
                *out++ = (char)bits;
                characters = 0;
            }
        }
        write_all(target, bytes, (size_t)(out - bytes));
    }
    const char rest[2] = {characters == 2 ? (char)(bits >> 4) : (char)(bits >> 10), (char)(bits >> 2)};
    write_all(target, rest, characters > 1 ? (size_t)characters - 1 : 0);
    must(fsync(target) == 0 && close(target) == 0, "fsync");
    close(source);
}

int main(int argument_count, char **arguments) {
    if (argument_count != 3) {
        fputs("usage: bench_reading_plain <port> <file>\n", stderr);
        return 2;
    }
    const double start = seconds(CLOCK_MONOTONIC);
    const double processor = seconds(CLOCK_PROCESS_CPUTIME_ID);
    char line[512];
    const int server = connected(arguments[1]);
    read_line(server, line, sizeof line);
    command(server, "USER reader\r\n", line, sizeof line);
    command(server, "PASS demo\r\n", line, sizeof line);
    command(server, "LIST 1\r\n", line, sizeof line);
    const size_t room = (size_t)atol(strrchr(line, ' ')) * 2 + 1024;
    char *const message = malloc(room);
    must(message != NULL, "memory");
    command(server, "RETR 1\r\n", line, sizeof line);
    const size_t length = receive(server, message, room);
    command(server, "QUIT\r\n", line, sizeof line);
    size_t size = 0;
    const char *const encoded = attachment(message, length, &size);
    const int file = open(temporary, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    must(file >= 0, "open");
    write_all(file, encoded, size);
    close(file);
    const double opened = seconds(CLOCK_MONOTONIC);
    decode(arguments[2]);
    free(message);
    const double end = seconds(CLOCK_MONOTONIC);
    printf("seconds %f opening-seconds %f saving-seconds %f processor %f\n", end - start, opened - start,
           end - opened, seconds(CLOCK_PROCESS_CPUTIME_ID) - processor);
    return 0;
}
