// SPDX-License-Identifier: MIT
// GNUstep base at the tasks of the other programs of this folder.
#import <Foundation/Foundation.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec * 1e-9;
}

static long peakMemory(void) {
    FILE* status = fopen("/proc/self/status", "r");
    char line[256];
    long peak = 0;
    while (status && fgets(line, sizeof line, status)) {
        if (strncmp(line, "VmHWM:", 6) == 0) {
            peak = atol(line + 6);
        }
    }
    if (status) {
        fclose(status);
    }
    return peak;
}

static id load(NSData* data) {
    NSString* error = nil;
    id value = [NSPropertyListSerialization propertyListFromData:data
                                                mutabilityOption:NSPropertyListImmutable
                                                          format:NULL
                                                errorDescription:&error];
    if (!value) {
        fprintf(stderr, "cannot load\n");
        exit(1);
    }
    return value;
}

int main(int argc, char** argv) {
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    if (argc < 3) {
        fprintf(stderr, "bench_gnustep TASK FILE [TARGET]\n");
        return 2;
    }
    NSData* data = [NSData dataWithContentsOfFile:[NSString stringWithUTF8String:argv[2]]];
    double start = now();
    id value = load(data);
    if (strcmp(argv[1], "serialise") == 0) {
        NSString* error = nil;
        start = now();
        if (![NSPropertyListSerialization dataFromPropertyList:value
                                                        format:NSPropertyListXMLFormat_v1_0
                                              errorDescription:&error]) {
            return 1;
        }
    } else if (strcmp(argv[1], "save") == 0 && argc > 3) {
        start = now();
        if (![value writeToFile:[NSString stringWithUTF8String:argv[3]] atomically:YES]) {
            return 1;
        }
    } else if (strcmp(argv[1], "load") != 0) {
        fprintf(stderr, "unknown task\n");
        return 2;
    }
    printf("%.9f %ld\n", now() - start, peakMemory());
    [pool release];
    return 0;
}
