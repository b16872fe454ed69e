// A localisation project: the modules being translated and every resource of them.
#pragma once

#include "qvb/CDbObject.h"

class QVB_API CDbProject : public CDbObject {
public:
    CDbProject();
    CDbProject(const CDbProject& other);
    CDbProject& operator=(const CDbProject& other);
    ~CDbProject() override;
};
