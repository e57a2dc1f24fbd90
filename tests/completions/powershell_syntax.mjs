// Whether PowerShell's grammar accepts a script. Says where it does not, and ends with status 1 then.
//
//   node powershell_syntax.mjs PACKAGES SCRIPT      (PACKAGES: where tree-sitter-powershell and web-tree-sitter lie)

import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { resolve } from "node:path";

const [packages, script] = process.argv.slice(2);
const { Language, Parser } = createRequire(import.meta.url)(resolve(packages, "web-tree-sitter/web-tree-sitter.cjs"));

await Parser.init();
const parser = new Parser();
parser.setLanguage(await Language.load(resolve(packages, "tree-sitter-powershell/tree-sitter-powershell.wasm")));

function* mistakes(node) {
    if (node.isError || node.isMissing) yield node;
    for (const child of node.children) yield* mistakes(child);
}

const found = [...mistakes(parser.parse(readFileSync(script, "utf8")).rootNode)];
for (const { startPosition, type } of found) console.log(`${script}:${startPosition.row + 1}: ${type}`);
process.exitCode = found.length ? 1 : 0;
