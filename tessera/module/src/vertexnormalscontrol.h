// A pair of fields that other plug-ins build through the module's exported constructor.
#pragma once

class VertexNormalsControl {
public:
    VertexNormalsControl();

    int enabled = 1;
    void* normals = nullptr;
};
