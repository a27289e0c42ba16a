/* image_data.h -- the byte tables of the report's four images. */
#ifndef VEMCOV_REPORT_IMAGE_DATA_H
#define VEMCOV_REPORT_IMAGE_DATA_H

/* __Home.gif is 977 bytes: these 76, then 705 zeros, then these 196. */
const int HOME_GIF_HEAD_SIZE = 76;
const int HOME_GIF_ZERO_RUN = 705;
const int HOME_GIF_TAIL_SIZE = 196;
extern const unsigned char HOME_GIF_HEAD[HOME_GIF_HEAD_SIZE];
extern const unsigned char HOME_GIF_TAIL[HOME_GIF_TAIL_SIZE];

extern const unsigned char HELP_GIF[187];     /* __Help.gif */
extern const unsigned char LOGO_GIF[1414];    /* __TarskR.gif */
extern const unsigned char SPACER_GIF[43];    /* __Spacer.gif */

#endif
