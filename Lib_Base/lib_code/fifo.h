/* fifo.h - the handle of the host's list, carried inside its XML document and never read. */
#ifndef SIPCODE_FIFO_H
#define SIPCODE_FIFO_H

/* Opaque to the library: whatever the host's list service returns. */
typedef struct fifo *FIFOH;

#endif
