// Export control: the shared libraries are built with hidden visibility and
// export exactly what carries ZU_API.
#ifndef ZUUTL_FRAME_API_H
#define ZUUTL_FRAME_API_H

#define ZU_API __attribute__((visibility("default")))

#endif
