// Opaque handles of the headless desktop: what a loaded library, a window or
// a block of global memory is to a client. Nothing may be assumed of what
// they point to.
#ifndef ZUUTL_FRAME_HANDLES_H
#define ZUUTL_FRAME_HANDLES_H

struct ZuInstance;
typedef ZuInstance* HINSTANCE;

struct ZuWindow;
typedef ZuWindow* HWND;

struct ZuGlobalBlock;
typedef ZuGlobalBlock* HGLOBAL;

#endif
