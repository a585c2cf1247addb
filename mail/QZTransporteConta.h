// The transport a company's e-mail account names, with its password taken
// from where the account says (an environment variable, or a file only its
// owner may read). The password is never stored and never written out.
#pragma once

#include <memory>
#include <string>

#include "mail/QZTransporteEmail.h"
#include "platform/records/GTEmail.h"

// The password of an account; false with the reason (never the password)
// in `erro`. A file must be a regular file of the process's user with no
// permission for group or others; one line break at its end is dropped.
bool QZLeSenhaConta(const CQZDadosGT_ContaEmail& conta, std::string& senha, std::string& erro);

// The transport of an account; false with the reason in `erro`.
bool QZCriaTransporteConta(const CQZDadosGT_ContaEmail& conta, std::unique_ptr<IQZTransporteEmail>& transporte,
                           std::string& erro);
