// The PostgreSQL server the tests may run on: PXLREG_TESTE_PG holds its URL
// (scripts/test.sh postgres starts one). Each test takes a schema of its
// own on it, so tests run side by side without seeing each other's tables,
// and drops it when done.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>

#include "store/QZPostgres.h"

// The server's URL, or empty when the tests run without one.
inline std::string PXUrlPostgresTeste() {
    const char* url = std::getenv("PXLREG_TESTE_PG");
    return url ? url : "";
}

// `url` with the connections' schema set to `esquema`.
inline std::string PXUrlComEsquema(const std::string& url, const std::string& esquema) {
    return url + (url.find('?') == std::string::npos ? "?" : "&") + "options=-csearch_path%3D" + esquema;
}

class PXEsquemaPostgres {
public:
    PXEsquemaPostgres() {
        static std::atomic<int> contador{0};
        const std::string base = PXUrlPostgresTeste();
        if (base.empty()) return;
        m_esquema = "pxt_" + std::to_string(getpid()) + "_" + std::to_string(++contador);
        try {
            m_admin = std::make_unique<qzsql::CQZBanco>("teste");
            m_admin->Abre(qzsql::AbrePostgres("teste", base), 5000);
            m_admin->Executa(("DROP SCHEMA IF EXISTS " + m_esquema + " CASCADE").c_str());
            m_admin->Executa(("CREATE SCHEMA " + m_esquema).c_str());
            m_url = PXUrlComEsquema(base, m_esquema);
        } catch (const qzsql::Falha& f) {
            ADD_FAILURE() << "the test server did not take a schema: " << f.texto;
            m_admin.reset();
        }
    }
    ~PXEsquemaPostgres() {
        if (!m_admin || m_url.empty()) return;
        try {
            m_admin->Executa(("DROP SCHEMA IF EXISTS " + m_esquema + " CASCADE").c_str());
        } catch (const qzsql::Falha& f) {
            ADD_FAILURE() << "the test schema was not dropped: " << f.texto;
        }
    }
    PXEsquemaPostgres(const PXEsquemaPostgres&) = delete;
    PXEsquemaPostgres& operator=(const PXEsquemaPostgres&) = delete;

    // Empty when the tests run without a server.
    const std::string& Url() const { return m_url; }
    const std::string& Esquema() const { return m_esquema; }
    // Runs statements on the test's schema outside the store (the tests' own
    // loads and checks). Throws qzsql::Falha.
    void Executa(const std::string& sql) { m_admin->Executa(("SET search_path TO " + m_esquema + "; " + sql).c_str()); }

private:
    std::string m_esquema;
    std::string m_url;
    std::unique_ptr<qzsql::CQZBanco> m_admin;
};
