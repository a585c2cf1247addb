#include "platform/QZObjeto.h"

#include <cstring>

bool CException::GetErrorMessage(char* buffer, unsigned max) const {
    CString m = GetMensagem();
    if (!buffer || max == 0) return false;
    std::strncpy(buffer, m.GetString(), max - 1);
    buffer[max - 1] = '\0';
    return !m.IsEmpty();
}
