#include "zanserver/drivererrands.h"

#include "zancommon/nulldriver.h"

#include <QPointer>

#include <mutex>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using KvZANCommon::IDriver;

namespace ZANServer {

/// What both threads use.
struct DriverErrands::Shared {
    std::mutex mutex;
    DriverErrands* home = nullptr; // guarded, as the next; null once that is gone
    std::vector<std::function<void()>> answers;
    std::vector<std::unique_ptr<DriverErrand>> errands; // main thread

    /// On the driver's thread: has an answer taken on the main thread.
    void Return(std::function<void()> answer) {
        const std::lock_guard lock(mutex);
        if (home) {
            answers.push_back(std::move(answer));
            if (answers.size() == 1) {
                QMetaObject::invokeMethod(home, &DriverErrands::TakeAnswers, Qt::QueuedConnection);
            }
        }
    }
};

namespace {

/// Carries something out at its end, also when that is an exception.
template <class Function>
class AtEnd {
public:
    explicit AtEnd(Function function)
        : m_function(std::move(function)) {}
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;
    ~AtEnd() { m_function(); }

private:
    Function m_function;
};

} // namespace

DriverErrands::DriverErrands(DriverThread& thread)
    : m_thread(thread)
    , m_shared(new Shared) {
    m_shared->home = this;
}

DriverErrands::~DriverErrands() {
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->home = nullptr;
    }
    if (m_underWay == 0 || m_thread.HasEnded()) {
        delete m_shared;
    } else {
        // Behind the last errand. A driver that is given up never comes to it, and goes on using them.
        m_thread.Post(DriverCall::Setting, [shared = m_shared](IDriver&) { delete shared; });
    }
}

void DriverErrands::TakeAnswers() {
    std::vector<std::function<void()>> answers;
    {
        const std::lock_guard lock(m_shared->mutex);
        answers.swap(m_shared->answers);
    }
    const QPointer<DriverErrands> self(this); // an answer may be the end of this object
    for (const auto& answer : answers) {
        if (self) {
            --m_underWay;
            answer();
        }
    }
}

void DriverErrands::Keep(std::unique_ptr<DriverErrand> errand) {
    m_shared->errands.push_back(std::move(errand));
}

void DriverErrands::Send(DriverCall kind, DriverErrand& errand) {
    ++m_underWay;
    // Two pointers: the function holds them without memory of its own.
    m_thread.Post(kind, [shared = m_shared, sent = &errand](IDriver& driver) {
        const AtEnd atEnd([=] { shared->Return([sent] { sent->TakeAnswer(); }); });
        sent->CarryOut(driver);
    });
}

void DriverErrands::Call(DriverCall kind, std::function<void(IDriver&)> call, std::function<void()> answer) {
    ++m_underWay;
    m_thread.Post(kind,
                  [shared = m_shared, call = std::move(call), answer = std::move(answer)](IDriver& driver) {
                      const AtEnd atEnd([&] { shared->Return(answer); });
                      call(driver);
                  });
}

QString TakeLastError(IDriver& driver, long result) {
    QString text = Bounded(driver.GetLastError());
    driver.ClearLastError();
    if (!text.isEmpty()) {
        return text;
    }
    return result == KvZANCommon::NullDriver::NOT_SUPPORTED ? DRIVER_DOES_NOT_SUPPORT.toString()
                                                            : u"the driver refuses it with %1"_s.arg(result);
}

} // namespace ZANServer
