// Test helpers: a `vantel edit` session on a project file, a headless Debian Chromium, and generated
// projects of many operators.
import { type ChildProcess, execFile, spawn } from 'node:child_process';
import { mkdtempSync, readFileSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { promisify } from 'node:util';

import { type BrowserContext, chromium } from 'playwright-core';

export const host = resolve(process.env.VANTEL_HOST ?? '../../build/dev/bin/vantel');

export interface Session {
  url: string;
  token: string;
  port: number;
  output: () => string;
  request: (body: Record<string, unknown>) => Promise<any>;
  stop: () => Promise<void>;
}

// Starts `vantel edit FILE` and waits for the address it prints.
export async function startSession(file: string): Promise<Session> {
  const child: ChildProcess = spawn(host, ['edit', file], { stdio: ['ignore', 'pipe', 'pipe'] });
  let text = '';
  child.stdout?.on('data', (chunk) => (text += chunk));
  child.stderr?.on('data', (chunk) => (text += chunk));
  const url = await new Promise<string>((done, fail) => {
    const timer = setInterval(() => {
      const found = /open (http:\/\/\S+)/.exec(text);
      if (found) {
        clearInterval(timer);
        done(found[1]);
      }
    }, 50);
    child.once('exit', (code) => {
      clearInterval(timer);
      fail(new Error(`vantel edit ended (${code}) before serving:\n${text}`));
    });
  });
  const address = new URL(url);
  const token = address.searchParams.get('token') ?? '';
  const request = async (body: Record<string, unknown>) => {
    const reply = await fetch(`${address.origin}/api?token=${token}`, { method: 'POST', body: JSON.stringify(body) });
    return reply.json();
  };
  const stop = () =>
    new Promise<void>((done) => {
      if (child.exitCode !== null) {
        done();
        return;
      }
      child.once('exit', () => done());
      child.kill('SIGINT');
    });
  return { url, token, port: Number(address.port), output: () => text, request, stop };
}

export async function runHost(...args: string[]): Promise<{ code: number; output: string }> {
  try {
    const { stdout, stderr } = await promisify(execFile)(host, args);
    return { code: 0, output: stdout + stderr };
  } catch (error) {
    const failed = error as { code: number; stdout: string; stderr: string };
    return { code: failed.code, output: failed.stdout + failed.stderr };
  }
}

// Debian's Chromium, headless, with a profile of its own; nothing is downloaded.
export async function openBrowser(): Promise<BrowserContext> {
  return chromium.launchPersistentContext(mkdtempSync(join(tmpdir(), 'vantel-chromium-')), {
    executablePath: '/usr/bin/chromium',
    headless: true,
    viewport: { width: 1400, height: 850 },
    args: [
      '--no-sandbox',
      '--disable-gpu',
      '--disable-quic',
      '--no-first-run',
      '--disable-background-networking',
      '--disable-component-update',
      '--disable-sync',
    ],
  });
}

export const examples = resolve('../../examples');

// A project of `count` Arithmetic operators on a grid, each row a chain of connections; its version record
// is the bundled example's, so that it loads as this build's own file.
export function writeGridProject(folder: string, count: number): string {
  const { version } = JSON.parse(readFileSync(join(examples, 'ImagePipeline/ImagePipeline.json'), 'utf8'));
  const columns = 100;
  const key = (i: number) => `N${i} [${i.toString(36)}]`;
  const operators = [];
  const dataConnections = [];
  for (let i = 0; i < count; i += 1) {
    operators.push({
      key: key(i),
      name: '',
      type: 'Standard.Math.Arithmetic',
      position: [(i % columns) * 220, Math.floor(i / columns) * 120],
      parameters: [],
      dataInputs: [],
      dataOutputs: [],
    });
    if (i % columns !== 0) {
      dataConnections.push({ output: `${key(i - 1)}/Result`, input: `${key(i)}/A` });
    }
  }
  const root = { key: 'Project [p1]', name: '', type: 'Vantel.General.Graph', position: [0, 0], parameters: [],
    dataInputs: [], dataOutputs: [], operators, dataConnections, parameterConnections: [] };
  const file = join(folder, `Grid${count}.json`);
  writeFileSync(file, JSON.stringify({ root, version }));
  return file;
}
