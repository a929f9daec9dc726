#pragma once

#include <QString>

#include <functional>
#include <memory>

#include "link/portfailure.h"

class QObject;

/// The descriptor of a radio link, a stream socket. Letting go of it ends the link.
class RadioLink
{
public:
    /// Takes a duplicate, which programs that this one starts do not get.
    explicit RadioLink(int original);
    ~RadioLink();
    RadioLink(const RadioLink&) = delete;
    RadioLink& operator=(const RadioLink&) = delete;

    /// -1 if the duplicate could not be made.
    int descriptor() const { return own; }
    /// Ends the link for every holder of a duplicate; the descriptor stays. Safe from any thread.
    void shut() const;

private:
    const int own;
};

/// How the wish for a link ended: with the link, or with the reason why there is none.
struct RadioAnswer
{
    std::shared_ptr<RadioLink> link = {};
    PortFailure failure = PortFailure::None;
    QString text = {}; ///< what the system said, for the log
};

/// Wishes for a link to one device and returns at once. The answer comes once, on the thread of `context`,
/// unless that goes before. What is returned stands for the wish: without it a call is given up, and the
/// place that a link takes is free again.
using RadioDial = std::function<std::shared_ptr<void>(QObject* context,
                                                      const std::function<void(const RadioAnswer&)>& answer)>;
