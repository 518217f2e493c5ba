/* xml.h - the host's XML document.
 *
 * The library never reads or writes its members. It carries the pointer in SIP_XML (code.h) and passes it to the
 * host's Xml_Encode (host.h). The host defines what the members mean.
 */
#ifndef SIPCODE_XML_H
#define SIPCODE_XML_H

#include "fifo.h"

/* Whether a node of the host is in use. In C++ the width is fixed, so that any stored number is a valid value. */
typedef enum STATIC_NODE_STAT_E
#ifdef __cplusplus
    : int
#endif
{ E_STAT_IDLE = 0,
  E_STAT_INUSE = 1 } STATIC_NODE_STAT_E;

typedef struct Xmldoc {
    int xtype;
    int requst_id; /* spelling is part of the interface */
    char type[128];
    char name[128];
    char source[128];
    char content[1024];
    FIFOH mfifolist;
    STATIC_NODE_STAT_E eUseFlag;
} Xmldoc;

typedef Xmldoc *pXmldoc;

#endif
