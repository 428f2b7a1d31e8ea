#pragma once

#include "Directory/ProjectAPI.h"
#include "Mounting/MounterError.h"
#include "SignIn/OAuthError.h"
#include "System/Http.h"
#include "System/Shell.h"

#include <QString>

#include <exception>

/// The sentence that a component's failure says of itself, unreworded. For use where a caught failure ends.
inline QString descriptionOf(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const ProjectAPIError& error) {
        return error.description();
    } catch (const OAuthError& error) {
        return error.description();
    } catch (const MounterError& error) {
        return error.description();
    } catch (const ShellError& error) {
        return error.description();
    } catch (const NetworkError& error) {
        return error.description();
    } catch (const std::exception& error) {
        return QString::fromLocal8Bit(error.what());
    }
}
