// The application framework's object and exception bases.
#pragma once

#include "platform/CString.h"

class CObject {
public:
    virtual ~CObject() = default;
};

class CException : public CObject {
public:
    // Fills the buffer with the message; false when there is none.
    virtual bool GetErrorMessage(char* buffer, unsigned max) const;
    virtual CString GetMensagem() const { return CString(); }
};
