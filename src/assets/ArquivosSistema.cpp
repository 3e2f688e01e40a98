#include "ArquivosSistema.h"

#include <map>

#include "packet/DataPacket.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// The records of TARQ_VER while the package's take their places.
class TCargaDeArquivos {
  public:
    TCargaDeArquivos(TDataModulo& dm, const TDataPacket& pacote)
        : dm_(dm), pacote_(pacote), campoNome_(static_cast<std::size_t>(IndiceDoCampo(pacote.campos))) {
        TWKDQuery q(dm_.SQLConnection1, "select * from TARQ_VER");
        for (q.Open(); !q.Eof(); q.Next()) Lembra(q.Texto("arquivo"));
    }

    void Carrega(const TLinha& linha) {
        const std::string nome = linha[campoNome_].ComoTexto();
        dm_.Tela().Memo1(nome);
        ApagaPeloServidor(nome);
        try {
            ApagaPeloNome(nome);
            Inclui(linha);
            Lembra(nome);
        } catch (const TErroBanco& erro) {
            if (erro.ConexaoPerdida()) throw;
            Relata(nome, erro);
        } catch (const std::exception& erro) {
            Relata(nome, erro);
        }
    }

  private:
    static int IndiceDoCampo(const std::vector<TCampoPacote>& campos) {
        return wkd::IndiceDoCampo({campos.begin(), campos.end()}, "arquivo");
    }

    void Lembra(const std::string& nome) { guardados_.emplace(ChaveDeNome(nome), nome); }

    void Relata(const std::string& nome, const std::exception& erro) {
        dm_.Tela().Erro(TErroDaExecucao::NosDois(ErroDe(erro), "TARQ_VER", "Extraindo arquivos: " + nome,
                                                 nome + ": " + erro.what()));
    }

    /// The statement is issued twice.
    void ApagaPeloServidor(const std::string& nome) {
        const std::string comando = "delete from tarq_ver where upper(arquivo) = " + Aspas(Maiusculas(nome));
        dm_.Executa(comando);
        dm_.Executa(comando);
        dm_.Commit(comando);
    }

    /// What the server left: names that it capitalises in another way.
    void ApagaPeloNome(const std::string& nome) {
        const auto [primeiro, ultimo] = guardados_.equal_range(ChaveDeNome(nome));
        for (auto guardado = primeiro; guardado != ultimo; ++guardado)
            TWKDQuery(dm_.SQLConnection1, "delete from tarq_ver where arquivo = :pARQUIVO")
                .Param("pARQUIVO", guardado->second)
                .ExecSQL();
        guardados_.erase(primeiro, ultimo);
    }

    void Inclui(const TLinha& linha) {
        std::vector<std::string> colunas;
        TLinha valores;
        for (std::size_t i = 0; i < linha.size(); ++i) {
            if (linha[i].Nulo()) continue;
            colunas.push_back(pacote_.campos[i].nome);
            valores.push_back(linha[i]);
        }
        TTransacao transacao(dm_.SQLConnection1);
        const auto inclui = dm_.SQLConnection1.Prepara(ComandoInsere("TARQ_VER", colunas));
        for (std::size_t i = 0; i < valores.size(); ++i) inclui->Atribui(i, valores[i]);
        inclui->Executa();
        transacao.Commit();
    }

    TDataModulo& dm_;
    const TDataPacket& pacote_;
    std::size_t campoNome_;
    std::multimap<std::string, std::string> guardados_;  // stored names by their look-up form
};

}  // namespace

void AtualizaArquivosSistema(TDataModulo& dm, const TPastaDeTrabalho& pasta) {
    const std::filesystem::path arquivo = pasta.Arquivo("ARQUIVOS");
    if (arquivo.empty()) throw TErroPacote("O pacote não contém o arquivo ARQUIVOS. Peça um pacote completo.");
    const TDataPacket pacote = LePacote(arquivo);
    ExigeCampos(pacote, arquivo, {"arquivo"});
    for (const auto& campo : pacote.campos)
        if (!NomeDeSql(campo.nome)) throw TErroPacote(RecusaDoNome("Pacote ARQUIVOS, nome de campo", campo.nome));
    TCargaDeArquivos carga(dm, pacote);

    ITela& tela = dm.Tela();
    tela.PbGeral().Define(0, static_cast<int>(pacote.linhas.size()), 10, 0);
    tela.LblAtual("Extraindo arquivos do sistema");
    tela.Memo1("Extraindo arquivos....");
    for (const TLinha& linha : pacote.linhas) {
        tela.ProcessaMensagens();
        tela.PbGeral().Posicao(tela.PbGeral().Posicao() + 1);
        carga.Carrega(linha);
    }
}

}  // namespace wkd
