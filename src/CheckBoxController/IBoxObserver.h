#pragma once

class CHeckBox;

// Told of every change a box makes of its own accord (a click, a recomputation it was asked to
// announce). Not told of pushes from a parent: those are the observer's own doing.
class IBoxObserver {
public:
    virtual ~IBoxObserver() = default;
    virtual void OnChange(CHeckBox* box) = 0;
};
