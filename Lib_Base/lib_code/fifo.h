/* fifo.h - the handle of the host's list, carried inside its XML document and never looked into. */
#ifndef SIPCODE_FIFO_H
#define SIPCODE_FIFO_H

/* Opaque to the library: whatever the host's list service hands out. */
typedef struct fifo *FIFOH;

#endif
