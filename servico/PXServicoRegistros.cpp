#include "servico/PXServicoRegistros.h"

#include <exception>

#include "platform/QZCodigosResultado.h"

namespace {

// Non-blocking inconsistencies a handler reports while it checks a record.
class CPXInconsistencias : public IQZTrataInconsistencia {
public:
    explicit CPXInconsistencias(std::vector<CQZDadosGT_Erro>& lista) : m_lista(lista) {}
    void AdicionaInconsistencia(const CQZDadosGT_Erro& inconsistencia) override { m_lista.push_back(inconsistencia); }

private:
    std::vector<CQZDadosGT_Erro>& m_lista;
};

}  // namespace

long CPXServicoRegistros::Falha(long hr, const CQZDadosGT_Erro& erro) {
    m_erro = erro;
    if (m_erro.GetUltimoHR() == 0) m_erro.SetErro(hr, QZ_MODULO_PX, 0, "%s", erro.GetMensagem().GetString());
    return hr;
}

long CPXServicoRegistros::PreparaTratador(const IPXTipoRegistro& tipo, const TQZBaseParaDados& registro,
                                          std::unique_ptr<CPXTrataDados>& tratador, CQZArmazemSQL*& armazem) {
    tratador = tipo.Tratador(registro);
    if (!tratador) {
        m_erro.SetErro(QZ_E_SEM_REGRAS, QZ_MODULO_PX, 0, "O tipo %s não tem regras de gravação.", tipo.Nome());
        return QZ_E_SEM_REGRAS;
    }
    const long hr = tratador->Inicializa(m_sessao.empresa, m_sessao.usuario, m_sessao.sessao);
    if (hr < 0) return Falha(hr, *tratador);
    armazem = dynamic_cast<CQZArmazemSQL*>(tratador->GetConexao());
    if (!armazem) {
        m_erro.SetErro(QZ_E_SEM_SERVICOS, QZ_MODULO_CONEXAO, 5,
                       "Os serviços de dados da empresa \"%s\" não gravam registros.", m_sessao.empresa.GetString());
        return QZ_E_SEM_SERVICOS;
    }
    return 0;
}

long CPXServicoRegistros::Salva(const IPXTipoRegistro& tipo, TQZBaseParaDados& registro, bool simulacao,
                                CPXResultadoRegistro& resultado,
                                const std::function<void(CQZArmazemSQL&)>& confere) {
    m_erro.LimpaErro();
    resultado = CPXResultadoRegistro();
    std::exception_ptr falhaConferencia;
    try {
        std::unique_ptr<CPXTrataDados> tratador;
        CQZArmazemSQL* armazem = nullptr;
        if (long hr = PreparaTratador(tipo, registro, tratador, armazem)) return hr;

        CPXInconsistencias inconsistencias(resultado.inconsistencias);
        bool conflito = false;
        CPXLinhaRecusada recusa;
        const long hr = armazem->EmTransacao("Salva", [&]() -> long {
            if (confere) {
                try {
                    confere(*armazem);
                } catch (...) {
                    falhaConferencia = std::current_exception();
                    return QZ_E_INESPERADO;  // rolls the transaction back
                }
            }
            if (tipo.TemLinhas()) {
                // The lines are checked against the stored record as the rules
                // will see it: read in the same transaction.
                std::unique_ptr<TQZBaseParaDados> gravado;
                if (tipo.EstaGravado(registro)) {
                    gravado = tipo.Novo();
                    const long r = tipo.Le(*armazem, tipo.Chave(registro), *gravado);
                    // A key nobody has: every line is new, and the rules
                    // answer for the key.
                    if (r == QZ_E_REGISTRO_NAO_ENCONTRADO)
                        gravado.reset();
                    else if (r != 0)
                        return r;
                }
                if (!tipo.ConfereLinhas(*tratador, registro, gravado.get(), recusa)) return 0;
            }
            resultado.permitido = tratador->TrataGravacao(&registro, &inconsistencias) != 0;
            if (!resultado.permitido || simulacao) return 0;
            const long r = tipo.Grava(*armazem, registro);
            conflito = r == QZ_E_REGISTRO_ALTERADO;
            return r;
        });
        if (falhaConferencia) std::rethrow_exception(falhaConferencia);
        if (conflito) {
            // The stored stamp moved after the rules read it: somebody else
            // saved the record in between.
            resultado.permitido = false;
            resultado.veredito.SetAviso(PX_MSG(3), 0);
            return 0;
        }
        if (hr != 0) {
            // The rules allowed it but the write failed: nothing was saved.
            resultado.permitido = false;
            return Falha(hr, armazem->GetErro());
        }
        resultado.gravado = resultado.permitido && !simulacao;
        if (!resultado.permitido) resultado.veredito = tratador->GetErro();
        if (!recusa.lista.empty()) {
            resultado.lista = recusa.lista;
            resultado.linha = recusa.linha;
            resultado.veredito.SetItem(recusa.linha);
        }
        return 0;
    } catch (const std::exception& e) {
        if (falhaConferencia) throw;
        m_erro.SetErro(QZ_E_INESPERADO, QZ_MODULO_PX, 0, "Falha inesperada ao gravar: %s", e.what());
        return QZ_E_INESPERADO;
    }
}

namespace {

// A connection of the service's own to the company's store, given back to
// its factory when done.
class CPXConexaoServico {
public:
    long Abre(const CString& empresa, CQZDadosGT_Erro& erro) {
        const long hr = QZAbreConexaoEmpresa(empresa, m_servicos, m_conexao, erro);
        if (hr < 0) return hr;
        if (!Armazem()) {
            erro.SetErro(QZ_E_SEM_SERVICOS, QZ_MODULO_CONEXAO, 5,
                         "Os serviços de dados da empresa \"%s\" não gravam registros.", empresa.GetString());
            return QZ_E_SEM_SERVICOS;
        }
        return 0;
    }
    ~CPXConexaoServico() {
        if (m_conexao && m_servicos.pFabrica) m_servicos.pFabrica->Devolve(std::move(m_conexao));
    }
    CQZArmazemSQL* Armazem() const { return dynamic_cast<CQZArmazemSQL*>(m_conexao.get()); }

private:
    CQZServicosEmpresa m_servicos;
    std::unique_ptr<IQZConexaoEmpresa> m_conexao;
};

}  // namespace

long CPXServicoRegistros::Exclui(const IPXTipoRegistro& tipo, int64_t chave,
                                 std::unique_ptr<TQZBaseParaDados>& registro, CPXResultadoRegistro& resultado,
                                 const CPXOpcoesExclusao& opcoes) {
    m_erro.LimpaErro();
    resultado = CPXResultadoRegistro();
    try {
        // The record chooses its handler (one class, several registers).
        registro = tipo.Novo();
        {
            CPXConexaoServico conexao;
            if (long hr = conexao.Abre(m_sessao.empresa, m_erro)) return hr;
            CQZArmazemSQL& leitura = *conexao.Armazem();
            if (long hr = tipo.Le(leitura, chave, *registro)) {
                m_erro = leitura.GetErro();
                // Named as the user names it: a movement by "YYYY-MM/N".
                if (hr == QZ_E_REGISTRO_NAO_ENCONTRADO)
                    m_erro.SetErro(hr, QZ_MODULO_CONEXAO, 2, "Não há %s na chave %s.", tipo.Nome(),
                                   tipo.TextoChave(chave).GetString());
                return hr;
            }
        }
        if (tipo.Exclusao() == EPXExclusao::CADASTRO) return ExcluiCadastro(tipo, chave, *registro, resultado);

        std::unique_ptr<CPXTrataDados> tratador;
        CQZArmazemSQL* armazem = nullptr;
        if (long hr = PreparaTratador(tipo, *registro, tratador, armazem)) return hr;

        const bool cancela = tipo.Exclusao() == EPXExclusao::CANCELAMENTO;
        CPXInconsistencias inconsistencias(resultado.inconsistencias);
        bool conflito = false;
        const long hr = armazem->EmTransacao("Exclui", [&]() -> long {
            // Read again under the write lock: what the rules see is what goes.
            if (long r = tipo.Le(*armazem, chave, *registro)) return r;
            if (!cancela && !tipo.VerificaIntegridade(*registro, m_sessao, resultado.veredito)) return 0;
            if (cancela) tipo.PreparaCancelamento(*registro, opcoes);
            if (!tratador->TrataExclusao(registro.get(), &inconsistencias)) {
                resultado.veredito = tratador->GetErro();
                return 0;
            }
            // A cancelled record stays, in the situation its rules gave it.
            const long r = cancela ? tipo.Grava(*armazem, *registro) : tipo.Remove(*armazem, *registro);
            conflito = r == QZ_E_REGISTRO_ALTERADO;
            resultado.permitido = r == 0;
            return r;
        });
        return ConcluiExclusao(hr, conflito, armazem->GetErro(), resultado);
    } catch (const std::exception& e) {
        m_erro.SetErro(QZ_E_INESPERADO, QZ_MODULO_PX, 0, "Falha inesperada ao excluir: %s", e.what());
        return QZ_E_INESPERADO;
    }
}

long CPXServicoRegistros::ExcluiCadastro(const IPXTipoRegistro& tipo, int64_t chave, TQZBaseParaDados& registro,
                                         CPXResultadoRegistro& resultado) {
    CPXConexaoServico conexao;
    if (long hr = conexao.Abre(m_sessao.empresa, m_erro)) return hr;
    CQZArmazemSQL& armazem = *conexao.Armazem();
    bool conflito = false;
    const long hr = armazem.EmTransacao("Exclui", [&]() -> long {
        if (long r = tipo.Le(armazem, chave, registro)) return r;
        if (!tipo.VerificaIntegridade(registro, m_sessao, resultado.veredito)) return 0;
        const long r = tipo.Remove(armazem, registro);
        conflito = r == QZ_E_REGISTRO_ALTERADO;
        resultado.permitido = r == 0;
        return r;
    });
    return ConcluiExclusao(hr, conflito, armazem.GetErro(), resultado);
}

// A record changed since it was read is a refusal (message 3), any other
// failure the store's own.
long CPXServicoRegistros::ConcluiExclusao(long hr, bool conflito, const CQZDadosGT_Erro& erroArmazem,
                                          CPXResultadoRegistro& resultado) {
    if (conflito) {
        resultado.permitido = false;
        resultado.veredito.SetAviso(PX_MSG(3), 0);
        return 0;
    }
    if (hr != 0) return Falha(hr, erroArmazem);
    resultado.gravado = resultado.permitido;
    return 0;
}
