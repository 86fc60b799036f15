// What is asked of the program. Failures are Errors with the one line that it says.

async function failure(response) {
  const body = await response.json().catch(() => ({}));
  const error = new Error(body.error ?? `the program has answered ${response.status}`);
  error.status = response.status;
  error.picture = body.picture;
  return error;
}

async function ask(path, options = {}) {
  let response;
  try {
    response = await fetch(path, options);
  } catch (error) {
    if (error.name === 'AbortError') throw error;
    throw new Error('The program does not answer any more: it has ended, or its terminal was closed.');
  }
  if (!response.ok) throw await failure(response);
  return response;
}

const post = (path, body, signal) =>
  ask(path, { method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(body), signal });

export const get = async (path) => (await ask(path)).json();
export const send = async (path, body) => (await post(path, body)).json();
export const remove = async (path) => (await ask(path, { method: 'DELETE' })).json();

/** A picture or sound; null when a newer request took its place. */
export async function media(path, body, signal) {
  try {
    const response = await post(path, body, signal);
    if (response.status === 204) return null;
    return { blob: await response.blob(), time: Number(response.headers.get('X-Picture-Time') ?? 0) / 1000 };
  } catch (error) {
    if (error.name === 'AbortError') return null;
    throw error;
  }
}
