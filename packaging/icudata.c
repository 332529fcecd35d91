/* The table of data that the ICU libraries link, with nothing in it. The real one is 31 MB: names of languages, currencies and
 * regions, orders of their alphabets, encodings. The toolkit works without them, and these programs ask for none. NAME is the
 * symbol that the present version of ICU asks for. */
#include <stdint.h>

struct Table {
    uint16_t headerSize;
    uint8_t mark[2];
    uint16_t informationSize;
    uint16_t reserved;
    uint8_t isBigEndian;
    uint8_t isEbcdic;
    uint8_t characterSize;
    uint8_t filler;
    uint8_t format[4];
    uint8_t formatVersion[4];
    uint8_t dataVersion[4];
    uint8_t padding[8];
    uint32_t entryCount;
};

const struct Table NAME = {
    .headerSize = 32,
    .mark = {0xda, 0x27},
    .informationSize = 20,
    .isBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__,
    .characterSize = 2,
    .format = {'C', 'm', 'n', 'D'},
    .formatVersion = {1},
    .entryCount = 0,
};
