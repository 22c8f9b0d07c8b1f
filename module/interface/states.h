/*
 * Save and load states: how settings get into files and back. There is no service to look up; the host hands a state to
 * every save and load callback (handler.h) and to other operations that save or load.
 *
 * A state has one of two forms, and a callback that only uses the operations below need not know which:
 *   - Binary, as in object files: integers and floats are big-endian. A block is a 4-byte identifier, a 2-byte size and
 *     its contents, padded to an even length, so it holds at most 65,535 bytes. A string ends with a zero byte and is
 *     padded to an even length.
 *   - Text, as in scene files: every write outside a leaf block is a line of its own. A leaf block is one line, its
 *     token and then its values; any other block is `{ Token`, its contents indented by two blanks, and `}`. Signed
 *     integers are decimal, unsigned ones hexadecimal, and strings are in double quotes.
 *
 * Blocks nest. Whoever begins a block, or enters one, ends it. Reads stop at the end of the innermost block and, in
 * text form, at the end of the line.
 */
#ifndef VELM_MODULE_INTERFACE_STATES_H
#define VELM_MODULE_INTERFACE_STATES_H

#ifdef __cplusplus
extern "C" {
#endif

enum {
    kStateBinary = 0, /* as in object files */
    kStateText = 1    /* as in scene files */
};

/* Names a kind of block in both forms. A table of them ends with an id of 0. */
typedef struct HostBlockId {
    unsigned int id;   /* four characters, the first in the high byte; 0 ends a table */
    const char *token; /* the name in text form. It may contain blanks; a reader takes the longest one that fits */
} HostBlockId;

/* Writes settings. Valid during the call that it is handed to. The first argument of every operation is the member
 * `data`. Counts are numbers of values, not of bytes; with a count below 1 or a null array, nothing is written. No
 * operation reports failure: the host detects a block that is too large or was not ended when saving is over, and fails
 * the whole save. */
typedef struct HostSaveState {
    int mode;   /* kStateBinary or kStateText */
    void *data; /* the host's own; handed to every operation */

    /* Writes raw bytes; in text form, as hexadecimal numbers. [interface thread; not while rendering] */
    void (*write)(void *data, const char *bytes, int count);
    /* Writes signed 8-bit integers. [interface thread; not while rendering] */
    void (*writeI1)(void *data, const char *values, int count);
    /* Writes signed 16-bit integers. [interface thread; not while rendering] */
    void (*writeI2)(void *data, const short *values, int count);
    /* Writes signed 32-bit integers. [interface thread; not while rendering] */
    void (*writeI4)(void *data, const int *values, int count);
    /* Writes unsigned 8-bit integers. [interface thread; not while rendering] */
    void (*writeU1)(void *data, const unsigned char *values, int count);
    /* Writes unsigned 16-bit integers. [interface thread; not while rendering] */
    void (*writeU2)(void *data, const unsigned short *values, int count);
    /* Writes unsigned 32-bit integers. [interface thread; not while rendering] */
    void (*writeU4)(void *data, const unsigned int *values, int count);
    /* Writes single-precision floats. [interface thread; not while rendering] */
    void (*writeFP)(void *data, const float *values, int count);
    /* Writes a zero-terminated string; null counts as an empty one. [interface thread; not while rendering] */
    void (*writeString)(void *data, const char *text);
    /* Writes an identifier as a value: its four characters, or its token in text form. Null, or an identifier without a
     * token, writes nothing. [interface thread; not while rendering] */
    void (*writeId)(void *data, const HostBlockId *id);
    /* Begins a block inside the present one. With `leaf` non-zero it holds values only, on one line in text form. `id`
     * and its token must not be null. [interface thread; not while rendering] */
    void (*beginBlock)(void *data, const HostBlockId *id, int leaf);
    /* Ends the innermost block. A mistake, which fails the save, when none is open.
     * [interface thread; not while rendering] */
    void (*endBlock)(void *data);
    /* Gives the number of blocks that are open. [interface thread; not while rendering] */
    int (*depth)(void *data);
    /* Writes double-precision floats. [interface thread; not while rendering] */
    void (*writeDP)(void *data, const double *values, int count);
} HostSaveState;

/* Reads settings: the mirror of the save state. Valid during the call that it is handed to. The first argument of every
 * operation is the member `data`. The operations that read values give how many there were, from 0 to `count`, and
 * leave the rest of the array alone; a null array or a count below 1 gives 0. Damaged data only ends reading
 * early; the host reports it after the load. */
typedef struct HostLoadState {
    int mode;   /* kStateBinary or kStateText */
    void *data; /* the host's own; handed to every operation */

    /* Reads raw bytes and gives how many there were. [interface thread; not while rendering] */
    int (*read)(void *data, char *bytes, int count);
    /* Reads signed 8-bit integers and gives how many there were. [interface thread; not while rendering] */
    int (*readI1)(void *data, char *values, int count);
    /* Reads signed 16-bit integers and gives how many there were. [interface thread; not while rendering] */
    int (*readI2)(void *data, short *values, int count);
    /* Reads signed 32-bit integers and gives how many there were. [interface thread; not while rendering] */
    int (*readI4)(void *data, int *values, int count);
    /* Reads unsigned 8-bit integers and gives how many there were. [interface thread; not while rendering] */
    int (*readU1)(void *data, unsigned char *values, int count);
    /* Reads unsigned 16-bit integers and gives how many there were. [interface thread; not while rendering] */
    int (*readU2)(void *data, unsigned short *values, int count);
    /* Reads unsigned 32-bit integers and gives how many there were. [interface thread; not while rendering] */
    int (*readU4)(void *data, unsigned int *values, int count);
    /* Reads single-precision floats and gives how many there were. [interface thread; not while rendering] */
    int (*readFP)(void *data, float *values, int count);
    /* Reads a string into `buffer` of `size` bytes, cut to size - 1 bytes and zero-terminated. Gives its length there;
     * without a string, 0 and an empty buffer. A null buffer gives 0. [interface thread; not while rendering] */
    int (*readString)(void *data, char *buffer, int size);
    /* Reads an identifier that was written as a value. Gives its id when `table` has it; else 0, and nothing is read.
     * [interface thread; not while rendering] */
    unsigned int (*readId)(void *data, const HostBlockId *table);
    /* Enters the next block of the present level that `table` has, skipping values and unknown blocks before it. Gives
     * the block's id; 0, without moving, when there is none or the table is null.
     * [interface thread; not while rendering] */
    unsigned int (*findBlock)(void *data, const HostBlockId *table);
    /* Leaves the innermost block that findBlock entered, skipping what was not read. No effect when there is none.
     * [interface thread; not while rendering] */
    void (*endBlock)(void *data);
    /* Gives the number of blocks that were entered and not yet left. [interface thread; not while rendering] */
    int (*depth)(void *data);
    /* Reads double-precision floats and gives how many there were. [interface thread; not while rendering] */
    int (*readDP)(void *data, double *values, int count);
} HostLoadState;

#ifdef __cplusplus
}
#endif

#endif
