// Opaque handles of the headless desktop: what a loaded library, a window or
// a block of global memory is to a client. Nothing may be assumed of what
// they point to. HINSTANCE and HWND are declared exactly as the ODBC headers
// declare them, so that a driver can include both.
#ifndef ZUUTL_FRAME_HANDLES_H
#define ZUUTL_FRAME_HANDLES_H

typedef void* HINSTANCE;
typedef void* HWND;

struct ZuGlobalBlock;
typedef ZuGlobalBlock* HGLOBAL;

#endif
