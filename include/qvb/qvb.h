// Everything an application needs: the scalar and framework types, the record
// structures, and the three database classes.
#pragma once

#include "qvb/CArray.h"
#include "qvb/CDWordArray.h"
#include "qvb/CDbDictionary.h"
#include "qvb/CDbObject.h"
#include "qvb/CDbProject.h"
#include "qvb/CObject.h"
#include "qvb/CPtrArray.h"
#include "qvb/CString.h"
#include "qvb/CTypedPtrArray.h"
#include "qvb/QvbVersion.h"
#include "qvb/Records.h"
#include "qvb/WinTypes.h"
