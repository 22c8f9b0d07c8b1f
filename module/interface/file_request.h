/*
 * "File Request 2": lets the user choose a file. The lookup gives a pointer to the function itself, a
 * HostFileRequestFunc.
 */
#ifndef VELM_MODULE_INTERFACE_FILE_REQUEST_H
#define VELM_MODULE_INTERFACE_FILE_REQUEST_H

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_FILE_REQUEST "File Request 2"

enum {
    kFileRequestVersion = 3, /* of the request that is described here */
    kFileRequestLoad = 1     /* the type of a request for a file to be loaded */
};

/* A request. The caller owns it and its texts and buffers, and may keep it for the next request, which then begins
 * where the user was last. */
typedef struct HostFileRequest {
    int type;             /* kFileRequestLoad */
    int result;           /* set by the host: 1 a file was chosen, 0 the user cancelled, negative on an error */
    const char *title;    /* of the window */
    const char *fileType; /* the kind of file to be offered, as in "Images" */
    char *path;           /* gets the directory, with a slash at its end; may be null, as the next two */
    char *baseName;       /* gets the file's name without the directory */
    char *fullName;       /* gets both together */
    int bufferLength;     /* bytes of each of the three buffers; a longer name is an error */
    /* Called each time the user picks a file in the window, with the buffers filled. May be null. The result is 0.
     * [interface thread; not while rendering] */
    int (*pick)(struct HostFileRequest *request);
} HostFileRequest;

/* Asks the user for a file and waits for the answer, which is left in the request. `version` is kFileRequestVersion.
 * Gives 0 when the request was made, whatever its result; non-zero, without touching it, for a version that the host
 * does not know. [interface thread; not while rendering] */
typedef int HostFileRequestFunc(int version, HostFileRequest *request);

#ifdef __cplusplus
}
#endif

#endif
