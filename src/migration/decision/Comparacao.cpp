#include "decision/Comparacao.h"

#include <algorithm>
#include <initializer_list>

#include "dialect/Dialeto.h"
#include "values/Texto.h"

namespace wkd {

namespace {

bool Um(const std::string& tipo, std::initializer_list<std::string_view> tipos) {
    return std::find(tipos.begin(), tipos.end(), tipo) != tipos.end();
}

/// Field type that a physical column stands for when its stored type is of another family; "" for other families.
std::string_view TipoDaFamilia(const TColunaFisica& coluna) {
    switch (coluna.tipo) {
        case TTipoDado::Inteiro:
            return "ftInteger";
        case TTipoDado::Flutuante:
            return "ftFloat";
        case TTipoDado::Texto:
            return "ftString";
        case TTipoDado::Blob:
        case TTipoDado::Memo:
            return "ftBlob";
        case TTipoDado::Data:
        case TTipoDado::Hora:
        case TTipoDado::DataHora:
            return "ftDateTime";
        default:
            return "";
    }
}

std::string_view Familia(const std::string& tipo) {
    const std::string t = Maiusculas(tipo);
    if (Um(t, {"FTSTRING", "FTGUID", "GUID"})) return "ftString";
    if (Um(t, {"FTFLOAT", "FTCURRENCY"})) return "ftFloat";
    if (Um(t, {"FTBLOB", "FTMEMO", "FTGRAPHIC"})) return "ftBlob";
    if (Um(t, {"FTINTEGER", "FTSMALLINT", "FTBOOLEAN", "FTWORD", "FTAUTOINC", "FTLARGEINT"})) return "ftInteger";
    return "";
}

/// The stored column as the database really has it. Of dates and times only a text can have been made in place.
TColunaDicionario Corrigida(TColunaDicionario velha, const TColunaFisica& fisica) {
    const auto familia = TipoDaFamilia(fisica);
    const auto guardada = Familia(velha.tipo);
    const bool conta = familia == "ftDateTime" ? guardada == "ftString" : !familia.empty() && !guardada.empty();
    if (conta && familia != guardada) {
        velha.tipo = familia;
        if (familia == "ftString") velha.tamanho = std::to_string(fisica.tamanho);
    } else if (familia == "ftString" && fisica.tamanho < velha.Tamanho()) {
        velha.tamanho = std::to_string(fisica.tamanho);
    }
    return velha;
}

TComandoPendente MudaTipo(std::string_view tabela, const TColunaDicionario& nova, const TColunaFisica& fisica,
                          TTipoBanco banco) {
    const std::string inicio = "alter table " + std::string(tabela) + Dialeto(banco).ChaveAlteraColuna(nova.nome);
    TComandoPendente comando{inicio + DefinicaoCampo(nova, banco),
                             inicio + TipoDaColuna(nova.tipo, nova.tamanho, banco), nova.chave == 1, nova.nome};
    if (Dialeto(banco).AlteracaoDispensaValor() && fisica.requerido) {
        comando.alternativa += " not null ";
        if (nova.chave != 1) comando.texto += " not null ";
    }
    if (comando.alternativa == comando.texto) comando.alternativa.clear();
    return comando;
}

/// A text becomes a blob: the temporary column comes, takes the values, and goes.
std::vector<TComandoPendente> TextoViraBlob(std::string_view tabela, const TColunaDicionario& nova, bool temporaria,
                                            TTipoBanco banco) {
    const std::string t(tabela);
    const std::string& c = nova.nome;
    const TDialeto& dialeto = Dialeto(banco);
    const std::string copia = "update  " + t + " set " + c + "_TMP = ";
    std::vector<TComandoPendente> comandos = {
        {copia + c, copia + dialeto.ParaBlob(c), false},
        {"alter table " + t + " drop column " + c + "_TMP", dialeto.ApagaColuna(t, c + "_TMP"), false}};
    for (auto& comando : comandos)
        if (comando.alternativa == comando.texto) comando.alternativa.clear();
    if (!temporaria)
        comandos.insert(comandos.begin(),
                        {"alter table " + t + " add " + c + "_TMP" + DefinicaoCampo(nova, banco), "", false});
    return comandos;
}

/// What becomes of a column whose type changes.
enum class TEfeito { Nada, MudaTipo, ViraBlob, Reconstroi };

struct TRegra {
    std::string_view novos, velhos;  // field types; "*" are all
    TEfeito efeito;
    bool exclusiva;  // nobody else may use the database meanwhile
};

/// The first that fits the new type and the old one holds, in the decision and in what is detected before a run.
constexpr TRegra kRegras[] = {
    {"FTFLOAT FTCURRENCY", "FTINTEGER FTFLOAT FTCURRENCY", TEfeito::MudaTipo, false},
    {"FTFLOAT FTCURRENCY", "FTSTRING FTGUID", TEfeito::Nada, true},
    {"FTFLOAT FTCURRENCY", "*", TEfeito::Reconstroi, true},
    {"FTSTRING", "FTBLOB", TEfeito::Reconstroi, true},
    {"GUID", "FTBLOB", TEfeito::Reconstroi, false},
    {"FTSTRING GUID", "*", TEfeito::MudaTipo, false},
    {"FTBLOB", "FTSTRING FTGUID", TEfeito::ViraBlob, false},
    {"FTINTEGER", "FTSTRING FTGUID", TEfeito::Nada, false},
    {"FTINTEGER", "FTINTEGER FTFLOAT FTCURRENCY", TEfeito::Nada, true},
    {"FTINTEGER", "*", TEfeito::Reconstroi, true},
    {"*", "FTINTEGER FTFLOAT FTCURRENCY FTSTRING FTGUID", TEfeito::Nada, false},
    {"*", "*", TEfeito::Reconstroi, false},
};

bool Tem(std::string_view tipos, const std::string& tipo) {
    return tipos == "*" || std::ranges::count(Divide(tipos, ' '), tipo) > 0;
}

const TRegra& Regra(const TColunaDicionario& nova, const TColunaDicionario& velha) {
    const std::string n = Maiusculas(nova.tipo), o = Maiusculas(velha.tipo);
    return *std::ranges::find_if(kRegras,
                                 [&](const TRegra& regra) { return Tem(regra.novos, n) && Tem(regra.velhos, o); });
}

void ComparaTipos(TDecisaoDaColuna& decisao, std::string_view tabela, const TColunaDicionario& nova,
                  const TColunaDicionario& velha, const TFatosFisicos& fisica, TTipoBanco banco) {
    switch (Regra(nova, velha).efeito) {
        case TEfeito::Nada:
            return;
        case TEfeito::MudaTipo:
            decisao.comandos.push_back(MudaTipo(tabela, nova, *fisica.coluna, banco));
            return;
        case TEfeito::ViraBlob:
            decisao.comandos = TextoViraBlob(tabela, nova, fisica.temporaria, banco);
            return;
        case TEfeito::Reconstroi:
            decisao.reconstroi = true;
            decisao.motivo = "tipo de " + nova.nome + " muda de " + velha.tipo + " para " + nova.tipo;
    }
}

/// Rows that are there have no value yet; those to come have one, whoever writes them.
TComandoPendente AcrescentaSemValor(std::string_view tabela, TColunaDicionario nova, TTipoBanco banco) {
    nova.chave = 0;
    if (nova.valorPadrao.empty()) nova.valorPadrao = "0";
    return {"alter table " + std::string(tabela) + " ADD " + nova.nome + " " + DefinicaoCampo(nova, banco), "", true};
}

/// What a key column that is without value gets: its default, or what a required one gets.
TComandoPendente PreencheChave(std::string_view tabela, const TColunaDicionario& nova) {
    const bool quando = Um(Maiusculas(nova.tipo), {"FTDATE", "FTTIME", "FTDATETIME"});
    const std::string valor = !nova.valorPadrao.empty() ? Aspas(Maiusculas(nova.valorPadrao))
                              : quando                  ? "current_timestamp"
                                                        : Aspas("0");
    return {"update " + std::string(tabela) + " set " + nova.nome + " = " + valor + " where " + nova.nome + " is null",
            "", true};
}

void ComparaChave(TDecisaoDaColuna& decisao, const TColunaDicionario& nova, const TColunaDicionario& guardada) {
    if (nova.chave != guardada.chave) {
        decisao.reconstroi = true;
        decisao.motivo = nova.nome + (nova.chave == 1 ? " entra na chave" : " sai da chave");
    } else if (nova.chave == 1 && nova.tamanho != guardada.tamanho) {
        decisao.reconstroi = true;
        decisao.motivo = "coluna de chave " + nova.nome + " muda de tamanho";
    }
}

}  // namespace

TDecisaoDaColuna ComparaColuna(std::string_view tabela, const TColunaDicionario& nova, const TColunaDicionario* velha,
                               const TFatosFisicos& fisica, TTipoBanco banco) {
    TDecisaoDaColuna decisao;
    if (velha && fisica.coluna) {
        const TColunaDicionario atual = Corrigida(*velha, *fisica.coluna);
        if (atual.tipo != nova.tipo)
            ComparaTipos(decisao, tabela, nova, atual, fisica, banco);
        else if (Maiusculas(nova.tipo) == "FTSTRING" && nova.Tamanho() > atual.Tamanho())
            decisao.comandos.push_back(MudaTipo(tabela, nova, *fisica.coluna, banco));
        ComparaChave(decisao, nova, *velha);
    } else if (!fisica.coluna) {
        decisao.acrescenta = true;
        decisao.comandos.push_back(
            {"alter table " + std::string(tabela) + " ADD " + nova.nome + " " + DefinicaoCampo(nova, banco), "",
             nova.chave == 1});
    }
    return decisao;
}

TDecisaoDaColuna ComparaNoLugar(std::string_view tabela, const TColunaDicionario& nova, const TColunaDicionario* velha,
                                const TFatosFisicos& fisica, TTipoBanco banco) {
    TDecisaoDaColuna decisao = ComparaColuna(tabela, nova, velha, fisica, banco);
    const bool eraDaChave = fisica.inacabada ? fisica.naChave : velha && velha->chave == 1;
    const bool daChave = nova.chave == 1;
    if (!fisica.coluna && daChave) decisao.comandos = {AcrescentaSemValor(tabela, nova, banco)};
    if (fisica.coluna && decisao.comandos.empty() && (decisao.reconstroi || (fisica.inacabada && daChave)) &&
        TipoNormal(fisica.coluna->tipoSql) != TipoNormal(TipoDaColuna(nova.tipo, nova.tamanho, banco)))
        decisao.comandos.push_back(MudaTipo(tabela, nova, *fisica.coluna, banco));
    if (daChave && (!eraDaChave || !fisica.coluna)) decisao.comandos.push_back(PreencheChave(tabela, nova));
    if (!daChave && eraDaChave && fisica.coluna)
        decisao.comandos.push_back({Dialeto(banco).DispensaValor(tabela, *fisica.coluna), "", true});
    decisao.reconstroi = false;
    decisao.motivo.clear();
    return decisao;
}

bool MudancaExclusiva(const TColunaDicionario& nova, const TColunaDicionario& velha) {
    const std::string o = Maiusculas(velha.tipo);
    const bool deChave = velha.chave == 1 && nova.chave == 1 && velha.tamanho != nova.tamanho;
    if (nova.tipo != velha.tipo) return deChave || Regra(nova, velha).exclusiva;
    return deChave || (Um(o, {"FTSTRING", "FTGUID"}) && nova.Tamanho() < velha.Tamanho()) || velha.chave != nova.chave;
}

}  // namespace wkd
