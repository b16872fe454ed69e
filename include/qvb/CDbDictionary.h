// A dictionary of phrases that serves as a translation memory.
#pragma once

#include "qvb/CDbObject.h"

class QVB_API CDbDictionary : public CDbObject {
public:
    CDbDictionary();
    CDbDictionary(const CDbDictionary& other);
    CDbDictionary& operator=(const CDbDictionary& other);
    ~CDbDictionary() override;
};
