#pragma once

// Told after the category controller has recounted its sums of what is to be added and removed.
class ITotalObserver {
public:
    virtual ~ITotalObserver() = default;
    virtual void OnTotalsChanged() = 0;
};
