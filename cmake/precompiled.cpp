// Has nothing of its own: the headers that others share are precompiled with it.
