#include <conio.h>

#include <cstdio>

#include "tkkernel/util.h"

int GetInput(char* pBuffer, int nMaximum, char chTerminator) {
    if (pBuffer == nullptr || nMaximum <= 0) return 0;
    for (int count = 0; count < nMaximum; ++count) {
        const int key = _getch();
        if (key == EOF || static_cast<char>(key) == chTerminator) {
            pBuffer[count] = '\0';
            return count;
        }
        pBuffer[count] = static_cast<char>(key);
    }
    return nMaximum;
}
