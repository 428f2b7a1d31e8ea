#include "sandbox/Faults.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace sandbox {

namespace {
constexpr qsizetype keptRequests = 200; // the sandbox runs all day, too
}

Fault Fault::fromJson(const QJsonObject& object) {
    Fault fault;
    for (auto member = object.begin(); member != object.end(); ++member) {
        const QString name = member.key();
        if (name == QLatin1String("status"))
            fault.status = member->toInt();
        else if (name == QLatin1String("refuse_post"))
            fault.refusePost = member->toBool();
        else if (name == QLatin1String("delay"))
            fault.delay = std::chrono::milliseconds(member->toInt());
        else if (name == QLatin1String("body"))
            fault.body = member->toString().toUtf8();
        else if (name == QLatin1String("content_type"))
            fault.contentType = member->toString().toUtf8();
        else if (name == QLatin1String("location"))
            fault.location = member->toString().toUtf8();
        else if (name == QLatin1String("padding"))
            fault.padding = member->toInteger();
        else if (name == QLatin1String("cut"))
            fault.cut = member->toBool();
        else if (name == QLatin1String("drip"))
            fault.drip = std::chrono::milliseconds(member->toInt());
        else
            throw std::invalid_argument("no such fault: " + name.toStdString());
    }
    return fault;
}

void Faults::set(Endpoint endpoint, const Fault& fault) {
    const std::lock_guard lock(m_mutex);
    m_faults.insert(endpoint, fault);
}

Fault Faults::of(Endpoint endpoint) const {
    const std::lock_guard lock(m_mutex);
    return m_faults.value(endpoint);
}

void Faults::record(const RecordedRequest& request) {
    const std::lock_guard lock(m_mutex);
    m_requests.append(request);
    if (m_requests.size() > keptRequests)
        m_requests.removeFirst();
}

QList<RecordedRequest> Faults::requests(const QByteArray& path) const {
    const std::lock_guard lock(m_mutex);
    QList<RecordedRequest> matching;
    std::copy_if(m_requests.begin(), m_requests.end(), std::back_inserter(matching),
                 [&path](const RecordedRequest& request) { return path.isEmpty() || request.path == path; });
    return matching;
}

} // namespace sandbox
