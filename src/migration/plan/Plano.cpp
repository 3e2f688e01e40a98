#include "plan/Plano.h"

#include <algorithm>
#include <map>

#include "context/CargaDoPacote.h"
#include "copy/CopiaDeLinhas.h"
#include "corrections/Correcoes.h"
#include "decision/DecisaoDaTabela.h"
#include "layout/Preambulo.h"
#include "package/Caminho.h"
#include "package/Trava.h"
#include "packet/DataPacket.h"
#include "passes/CamposTexto.h"
#include "plan/ExameDaTabela.h"
#include "plan/ExameDosDados.h"
#include "rebuild/Nova.h"
#include "rebuild/VoltaBackup.h"
#include "rows/WKDQuery.h"
#include "run/Atualizacao.h"
#include "run/UsuariosOnline.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

/// Forgets at the end of a scope what was supposed about the database.
class TSuposicoes {
  public:
    explicit TSuposicoes(TDataModulo& dm) : dm_(dm) {}
    ~TSuposicoes() {
        dm_.SarquivoVelho.Close();
        dm_.SatribVelho.Close();
        for (const auto& tabela : dm_.ListaDeTabelas()) dm_.EsqueceColunas(tabela);
    }
    TSuposicoes(const TSuposicoes&) = delete;
    TSuposicoes& operator=(const TSuposicoes&) = delete;

  private:
    TDataModulo& dm_;
};

class TPlanejador {
  public:
    TPlanejador(TDataModulo& dm, const TOpcoes& opcoes, TEstado& estado) : ctx_{dm, opcoes, estado, {}, {}} {}

    std::optional<TPlano> Planeja();

  private:
    void Identifica();
    void Saude();
    void Recusadas(const std::vector<TLinhaRecusada>& linhas);
    void Prepara();
    void TiraRepetidas();
    void SupoeDicionario(const std::vector<TComandoDoDicionario>& comandos);
    void SupoeAjustes(const std::vector<TTextoParaAjustar>& textos);
    void LeIndices(const TPastaDeTrabalho& pasta);
    void DepoisDasTabelas(const TPastaDeTrabalho& pasta);
    void Tabelas();
    TPlanoDaTabela Tabela(const std::string& nome, const TMarcasDeAnalise& marcas);
    void Mudancas(TPlanoDaTabela& tabela, const TDecisaoDaTabela& decisao);
    void Achados(TPlanoDaTabela& tabela, const TDecisaoDaTabela& decisao);
    void Volume(TPlanoDaTabela& tabela);
    void Tempos();
    void Disco();

    TContexto ctx_;
    TPlano plano_;
    std::map<std::string, std::int64_t> formatos_;
};

std::optional<TPlano> TPlanejador::Planeja() {
    const TPastaPassageira privada(ctx_.opcoes.temporaria);
    TPastaDeTrabalho pasta(privada.Caminho());
    plano_.servidor = ServidorVivo(ctx_.Conexao());
    if (!TemDicionario(ctx_)) return std::nullopt;
    const TSuposicoes suposicoes(ctx_.dm);
    Identifica();
    Saude();
    if (!Desempacota(ctx_, pasta)) return std::nullopt;
    Recusadas(CarregaDicionarios(ctx_, pasta));
    plano_.trocas = TrocasDeRegistros(ctx_.dm, pasta);
    Seleciona(ctx_);
    LeDicionarioGravado(ctx_);
    ctx_.abertas = ReconstrucoesAbertas(ctx_.dm);
    TiraRepetidas();
    DesconsideraVersoesNegativas(ctx_);
    Prepara();
    LeIndices(pasta);
    formatos_ = ctx_.Dialeto().Formatos(ctx_.Conexao());
    Tabelas();
    Tempos();
    Disco();
    DepoisDasTabelas(pasta);
    for (const auto& mudanca : MudancasExclusivas(ctx_.novo, ctx_.gravado))
        for (auto& tabela : plano_.tabelas)
            if (tabela.nome == mudanca.tabela) tabela.exclusivas.push_back(mudanca.linha);
    return std::move(plano_);
}

void TPlanejador::Identifica() {
    plano_.alias = ctx_.opcoes.alias;
    plano_.banco = ctx_.dm.SQLConnection1.RetornaDadosConexao().Texto();
    plano_.pacote = ctx_.opcoes.pacote.string();
    plano_.tipo = ctx_.Banco();
    plano_.usuarios = ContaUsuariosOnline(ctx_.Conexao()).value_or(0);
}

void TPlanejador::Saude() {
    if (ctx_.Conexao().SoLeitura())
        plano_.achados.push_back(
            {"so-leitura", "", "o banco está marcado como só de leitura: a atualização não começaria", 0, {}});
    auto avisos = AvisosDoDriver(ctx_.Conexao());
    for (auto& aviso : AvisosDoCatalogo(ctx_.Conexao())) avisos.push_back(std::move(aviso));
    for (auto& aviso : avisos) {
        if (aviso.peso == TPeso::Impede)
            plano_.achados.push_back({aviso.tipo, "", aviso.texto, 0, {}});
        else
            plano_.avisos.push_back(std::move(aviso));
    }
}

void TPlanejador::Recusadas(const std::vector<TLinhaRecusada>& linhas) {
    for (const auto& [tabela, texto] : linhas) plano_.achados.push_back({"nome-improprio", tabela, texto, 0, {}});
}

void TPlanejador::Prepara() {
    const auto textos = TextosParaAjustar(ctx_);
    for (const auto& texto : textos) {
        plano_.ajustes.insert(plano_.ajustes.end(), texto.comandos.begin(), texto.comandos.end());
        if (texto.cortados > 0)
            plano_.achados.push_back({"texto-cortado",
                                      texto.tabela + "." + texto.coluna,
                                      "textos seriam cortados em " + std::to_string(kLarguraAjustada) +
                                          " caracteres; inteiros, ficariam em AtualizaWKD.rejeitados.jsonl",
                                      texto.cortados,
                                      {}});
    }
    const auto comandos = PendenciasDoDicionario(ctx_.dm);
    for (const auto& comando : comandos) plano_.dicionario.push_back(comando.texto);
    for (const auto nome : CorrecoesPendentes(ctx_)) plano_.correcoes.emplace_back(nome);
    SupoeAjustes(textos);
    SupoeDicionario(comandos);
}

/// The run takes the stored rows of a table away that occur more than once, but for those of an open rebuild.
void TPlanejador::TiraRepetidas() {
    std::map<std::pair<std::string, std::string>, int> vezes;
    for (const auto& tabela : ctx_.gravado.Tabelas()) ++vezes[{tabela.modulo, ChaveDeNome(tabela.nome)}];
    for (const auto& tabela : ctx_.novo.Tabelas())
        if (vezes[{tabela.modulo, ChaveDeNome(tabela.nome)}] > 1 && !ctx_.abertas.contains(ChaveDeNome(tabela.nome)))
            ctx_.gravado.EsqueceTabela(tabela.modulo, tabela.nome);
}

void TPlanejador::SupoeDicionario(const std::vector<TComandoDoDicionario>& comandos) {
    for (const auto& comando : comandos) {
        if (comando.coluna.empty() || !ctx_.dm.ExisteTabela(comando.tabela)) continue;
        auto colunas = ctx_.dm.ColunasFisicas(comando.tabela);
        TColunaFisica nova;
        nova.nome = comando.coluna;
        nova.tipoSql = comando.tipo;
        nova.tipo = comando.tipo.starts_with("int") ? TTipoDado::Inteiro : TTipoDado::Texto;
        if (const auto abre = comando.tipo.find('('); abre != std::string::npos)
            nova.tamanho = std::stoi(comando.tipo.substr(abre + 1));
        colunas.push_back(std::move(nova));
        ctx_.dm.SupoeColunas(comando.tabela, std::move(colunas));
    }
}

void TPlanejador::SupoeAjustes(const std::vector<TTextoParaAjustar>& textos) {
    for (const auto& texto : textos) {
        auto colunas = ctx_.dm.ColunasFisicas(texto.tabela);
        for (auto& coluna : colunas)
            if (IgualSemCaixa(coluna.nome, texto.coluna)) coluna.tamanho = kLarguraAjustada;
        ctx_.dm.SupoeColunas(texto.tabela, std::move(colunas));
        if (TColunaDicionario* gravada = ctx_.gravado.Coluna(texto.tabela, texto.coluna))
            gravada->tamanho = std::to_string(kTamanhoAjustado);
    }
}

/// Reads SINDSEC and SINDSECA: the package's where it brings them, else the stored ones.
void TPlanejador::LeIndices(const TPastaDeTrabalho& pasta) {
    const auto le = [&](std::string_view tabela) {
        const auto arquivo = pasta.Arquivo(std::string(tabela) + ".WKD");
        TTabelaEmMemoria memoria;
        if (!arquivo.empty()) {
            memoria = LePacote(arquivo).Tabela();
            Recusadas(RecusaNomes(memoria, tabela, arquivo));
            return memoria;
        }
        if (!ctx_.dm.ExisteTabela(tabela)) return memoria;
        memoria = LeTudo(*ctx_.Conexao().Prepara("select * from " + std::string(tabela)));
        Recusadas(RecusaNomes(memoria, tabela, tabela));
        return memoria;
    };
    const auto indices = le("SINDSEC"), colunas = le("SINDSECA");
    ctx_.novo.LeIndices(indices, colunas);
}

void TPlanejador::Tabelas() {
    const TMarcasDeAnalise marcas(ctx_);
    TClientDataSet& tabelas = ctx_.dm.SArquivoNovo;
    for (tabelas.First(); !tabelas.Eof(); tabelas.Next())
        if (const auto* tabela = TabelaAtual(ctx_)) plano_.tabelas.push_back(Tabela(tabela->nome, marcas));
}

/// A packet that cannot be read is left to the run, which reports it.
void TPlanejador::DepoisDasTabelas(const TPastaDeTrabalho& pasta) {
    for (const auto nome : PassosFinais()) plano_.passos.emplace_back(nome);
    if (std::filesystem::exists(ctx_.opcoes.marcaNaoCria)) return;
    for (const auto& layout : pasta.Arquivos(".rtm")) plano_.layouts.push_back(NomeDoArquivo(layout));
    const auto arquivos = pasta.Arquivo("ARQUIVOS");
    try {
        if (arquivos.empty()) return;
        const auto tabela = LePacote(arquivos).Tabela();
        const int nome = IndiceDoCampo(tabela.campos, "ARQUIVO");
        for (const auto& linha : tabela.linhas)
            if (nome >= 0) plano_.arquivos.push_back(linha[static_cast<std::size_t>(nome)].ComoTexto());
    } catch (const TErroPacote&) {
    }
}

TPlanoDaTabela TPlanejador::Tabela(const std::string& nome, const TMarcasDeAnalise& marcas) {
    ctx_.Tela().LblGeral("Analisando Tabela: " + nome);
    const TDecisaoDaTabela decisao = DecideTabela(ctx_, marcas);
    TPlanoDaTabela tabela;
    tabela.nome = nome;
    tabela.acao = decisao.acao;
    tabela.motivo = decisao.motivo;
    for (const auto& comando : decisao.comandos) {
        // SQL Server takes the first form of most, Firebird that of none which has another.
        const bool outra = ctx_.Banco() == TTipoBanco::tbInterbase && !comando.alternativa.empty();
        tabela.comandos.push_back(comando.texto);
        tabela.aceitos.push_back(outra ? comando.alternativa : comando.texto);
    }
    const bool recria = decisao.acao == TAcaoDaTabela::Cria || decisao.acao == TAcaoDaTabela::Reconstroi;
    const bool existe = ctx_.dm.ExisteTabela(nome);
    if (decisao.acao == TAcaoDaTabela::Reconstroi && existe)
        tabela.comandos.push_back("drop table " + Maiusculas(nome));
    if (recria) {
        const std::string fisica = decisao.acao == TAcaoDaTabela::Cria ? nome : Maiusculas(nome);
        tabela.comandos.push_back(ctx_.dm.Atualiza.ComandoCriaTabela(fisica, ColunasNovas(ctx_, nome)));
        tabela.aceitos = tabela.comandos;
    }
    if (decisao.acao == TAcaoDaTabela::Nada) return tabela;
    Mudancas(tabela, decisao);
    Achados(tabela, decisao);
    return tabela;
}

/// Against what the table physically has, or what holds its rows where it is gone.
void TPlanejador::Mudancas(TPlanoDaTabela& tabela, const TDecisaoDaTabela& decisao) {
    const bool refaz = tabela.acao == TAcaoDaTabela::Reconstroi;
    const auto novas = ColunasNovas(ctx_, tabela.nome);
    const auto fisicas = ctx_.dm.ExisteTabela(tabela.nome) ? ctx_.dm.ColunasFisicas(tabela.nome)
                         : refaz                           ? ctx_.Conexao().Colunas(NomeDaBackup(tabela.nome))
                                                           : std::vector<TColunaFisica>();
    const auto muda = [&](const std::string& coluna) {
        return refaz ||
               std::ranges::find(decisao.comandos, coluna, &TComandoPendente::coluna) != decisao.comandos.end();
    };
    for (const auto& nova : novas) {
        if (!ColunaFisica(nova)) continue;
        const std::string tipo = TipoDaColuna(nova.tipo, nova.tamanho, ctx_.Banco());
        const std::string para = Troca(Minusculas(Apara(tipo)), " (", "(");
        const TColunaFisica* fisica = ColunaDeNome(fisicas, nova.nome);
        if (!fisica)
            tabela.mudancas.push_back({'+', nova.nome, "", para});
        else if (muda(nova.nome) && TipoNormal(fisica->tipoSql) != TipoNormal(para))
            tabela.mudancas.push_back({'~', nova.nome, fisica->tipoSql, para});
    }
    for (const auto& fisica : fisicas)
        if (refaz && fisica.expressao.empty() && std::ranges::none_of(novas, [&](const auto& nova) {
                return ColunaFisica(nova) && IgualSemCaixa(nova.nome, fisica.nome);
            }))
            tabela.mudancas.push_back({'-', fisica.nome, fisica.tipoSql, ""});
}

void TPlanejador::Achados(TPlanoDaTabela& tabela, const TDecisaoDaTabela& decisao) {
    const auto novas = ColunasNovas(ctx_, tabela.nome);
    if (CorrecaoMexeAntes(ctx_, tabela.nome))
        tabela.achados.push_back({"correcao-antes",
                                  "",
                                  "uma correção que roda antes das tabelas mexe nela: a decisão pode ser outra",
                                  0,
                                  {}});
    ExaminaChaves(ctx_, tabela, novas);
    if (decisao.acao == TAcaoDaTabela::Reconstroi) ExaminaDependencias(ctx_, tabela);
    if (decisao.acao == TAcaoDaTabela::Cria) {
        if (const auto impede = ctx_.dm.Atualiza.ImpedimentoParaCriar(tabela.nome, novas))
            tabela.achados.push_back({"impedimento", "", impede->mensagem, 0, {}});
        return;
    }
    const bool existe = ctx_.dm.ExisteTabela(tabela.nome);
    if (decisao.acao == TAcaoDaTabela::Reconstroi) {
        Volume(tabela);
        ForaDosDicionarios(ctx_, tabela);
    }
    ExaminaFormatos(tabela, formatos_[ChaveDeNome(tabela.nome)]);
    if (!existe) return;
    const auto exame = ExaminaDados(ctx_, tabela.nome, decisao, novas, ctx_.novo.Indices(tabela.nome));
    tabela.achados.insert(tabela.achados.end(), exame.begin(), exame.end());
}

/// Of a rebuild that an earlier run left open, the rows that are not back yet; but for one to another layout, by which
/// all move once more.
void TPlanejador::Volume(TPlanoDaTabela& tabela) {
    const std::string nome = Maiusculas(tabela.nome), backup = NomeDaBackup(nome);
    tabela.retoma = tabela.mudancas.empty() && RestauracaoInterrompida(ctx_, nome);
    const auto volume =
        VolumeDaTabela(ctx_, tabela.retoma || !ctx_.dm.ExisteTabela(tabela.nome) ? backup : tabela.nome);
    tabela.registros = tabela.retoma ? RestauracaoQueFalta(ctx_, nome).linhas : volume.registros;
    tabela.bytes = volume.registros == 0 ? 0 : volume.bytes * tabela.registros / volume.registros;
}

/// How long the rebuilds take on this server; what is not to be rebuilt costs no question.
void TPlanejador::Tempos() {
    TCopiasDoPlano copias;
    for (const auto& tabela : plano_.tabelas) copias.registros += tabela.registros;
    if (copias.registros == 0) return;
    copias.linhasPorCommit = LinhasPorCommit(ctx_);
    const auto custo = TCustoDoCommit::Mede(ctx_.Conexao());
    for (auto& tabela : plano_.tabelas) {
        const TVolumeDaCopia volume{tabela.registros, tabela.bytes, tabela.retoma};
        tabela.segundos = volume.Segundos(custo, copias.linhasPorCommit);
        copias.commits += volume.Commits(copias.linhasPorCommit);
        copias.segundos += tabela.segundos;
        copias.segundosComMuitas += volume.Segundos(custo, kMuitasPorCommit);
    }
    if (custo) plano_.copias = copias;
}

/// A backup table stays, and the log of the way back comes with it: twice the rows is enough, less than them is not.
void TPlanejador::Disco() {
    std::int64_t bytes = 0;
    for (const auto& tabela : plano_.tabelas) bytes += tabela.bytes;
    const auto livre = bytes == 0 ? std::nullopt : ctx_.Conexao().EspacoLivre();
    if (!livre) return;
    const auto cabem = static_cast<std::int64_t>(*livre) + ctx_.Conexao().Saude().livresNoArquivo.value_or(0);
    const std::string texto = "as reconstruções copiam " + ComMilhares(bytes) + " bytes, e o disco do banco tem " +
                              ComMilhares(cabem) + ", com as páginas livres do arquivo: libere espaço antes";
    if (cabem < bytes)
        plano_.achados.push_back({"disco-pequeno", "", texto, 0, {}});
    else if (cabem < 2 * bytes)
        plano_.avisos.push_back({"disco-pequeno", texto, TPeso::Alerta});
}

}  // namespace

bool TPlano::Muda() const {
    return !ajustes.empty() || !dicionario.empty() || !correcoes.empty() || !trocas.empty() ||
           std::ranges::any_of(tabelas, [](const auto& tabela) { return tabela.acao != TAcaoDaTabela::Nada; });
}

bool TPlano::TemAchados() const {
    return !achados.empty() || EsperaUsuarios() ||
           std::ranges::any_of(tabelas, [](const auto& tabela) { return !tabela.achados.empty(); });
}

bool TPlano::EsperaUsuarios() const {
    return usuarios > 0 && std::ranges::any_of(tabelas, [](const auto& tabela) { return !tabela.exclusivas.empty(); });
}

std::optional<TPlano> Planeja(TDataModulo& dm, const TOpcoes& opcoes, TEstado estado) {
    return TPlanejador(dm, opcoes, estado).Planeja();
}

}  // namespace wkd
