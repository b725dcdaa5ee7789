#pragma once

#include "kodObject.h"

class KOVIS_EXPORT kodSceneObject : public kodObject
{
    Q_OBJECT
public:
    using kodObject::kodObject;
    kodSceneObject() = default;
    kodSceneObject(const kodSceneObject& other) = default;
    kodSceneObject& operator=(const kodSceneObject& other) = default;

    virtual bool isValid() const;
};
